#pragma once

#include "platform/Export.h"
#include "time/NDateTime.h"

#include <cstdint>
#include <string_view>

class Settings;

/// One corporate operation of an instrument (a split, a dividend): the last day of the prices that are corrected, and
/// the factor. A plain value; one thread at a time.
class KALVENTO_API SingleHistoryOperation {
public:
    /// The kind of operation, a number from the data source. No kind has a name here, only properties: 4 and 14 take
    /// effect inverted; kinds up to 6 also change the volume, kinds from 7 on prices only.
    enum Type : std::int32_t {};

    static constexpr std::string_view XML_ID = "Id";
    static constexpr std::string_view XML_CORRECTION_FACTOR = "CorrectionFactor";
    static constexpr std::string_view XML_TYPE = "Type";
    static constexpr std::string_view XML_DATE = "Date";

    /// Identifier 0, the zero date, type 1, factor 1.
    SingleHistoryOperation() = default;
    /// a_id: number at the data source; a_date: the last day on the old scale, usually a midnight; a_factor: as
    /// received, not inverted.
    SingleHistoryOperation(int a_id, const NDateTime& a_date, Type a_type, double a_factor);
    /// Reads what SerializeState wrote; what is missing reads as zero.
    explicit SingleHistoryOperation(const Settings& a_settings);

    int GetId() const { return m_id; }
    const NDateTime& GetDate() const { return m_date; }
    Type GetType() const { return m_type; }
    /// The effective factor: for types 4 and 14 one divided by the stored factor (infinite where that is 0), otherwise
    /// the stored factor.
    double GetFactor() const;
    /// The factor as received, not inverted.
    double GetStoredFactor() const { return m_factor; }

    void SerializeState(Settings& a_settings) const;

private:
    int m_id = 0;
    NDateTime m_date;
    Type m_type = static_cast<Type>(1);
    double m_factor = 1.0;
};
