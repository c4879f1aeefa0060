#pragma once

#include "assets/Asset.h"
#include "platform/Export.h"

#include <string>

/// One row of a ranked list of a session. A plain value.
class KALVENTO_API AssetStatistics {
public:
    /// a_percentChange in percent. Note that a_value comes last.
    AssetStatistics(const Asset& a_asset, double a_percentChange, double a_turnover,
                    double a_transactionVolume, unsigned long long a_transactionCount, double a_value);

    const Asset& AssetObj() const { return m_asset; }
    /// The long name of the asset.
    const std::string& AssetName() const { return m_asset.GetLongName(); }
    double PercentChange() const { return m_percentChange; }
    double Turnover() const { return m_turnover; }
    double TransactionVolume() const { return m_transactionVolume; }
    double Value() const { return m_value; }
    unsigned long long TransactionCount() const { return m_transactionCount; }

private:
    Asset m_asset;
    double m_percentChange; // percent
    double m_turnover;
    double m_transactionVolume;
    double m_value;
    unsigned long long m_transactionCount;
};
