#include "assets/AssetStatistics.h"

AssetStatistics::AssetStatistics(const Asset& a_asset, double a_percentChange, double a_turnover,
                                 double a_transactionVolume, unsigned long long a_transactionCount,
                                 double a_value)
    : m_asset(a_asset),
      m_percentChange(a_percentChange),
      m_turnover(a_turnover),
      m_transactionVolume(a_transactionVolume),
      m_value(a_value),
      m_transactionCount(a_transactionCount)
{}
