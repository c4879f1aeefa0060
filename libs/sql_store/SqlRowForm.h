#pragma once

#include "time/NDateTime.h"

#include <pqxx/pqxx>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How values are stored in the database, so that they come back bit for bit. What comes from the database is not
/// trusted: a text of another form raises DamagedData.
namespace SqlRowForm {

/// A time in whole numbers that people can query, and its day number beside them, since that may include the ordering
/// counter or not.
struct TimeColumns {
    std::string day;       ///< "2024-05-17".
    std::string second;    ///< Of the day, 0 to 86399.
    std::string counter;   ///< 0 to 65535.
    std::string dayNumber; ///< Shortest text that reads back to the same bits.
};

/// Empty for a time that the columns can't hold: one that isn't valid, or whose fields aren't those of a calendar time
/// (the all-zero time).
std::optional<TimeColumns> WriteTime(const NDateTime& a_time);
/// The four columns to select for ReadTime, in this order. The day is read as a count from 1970-01-01.
inline constexpr const char* S_timeColumns = "day - date '1970-01-01', second, counter, day_number";
/// The four fields from a_first on.
NDateTime ReadTime(const pqxx::row& a_row, int a_first);

/// Infinities and NaN included; all NaNs are the one NaN of the database.
std::string WriteNumber(double a_value);
double ReadNumber(std::string_view a_text);
/// "{1.5,NaN,-Infinity}".
std::string WriteNumbers(const std::vector<double>& a_values);
/// Replaces the contents of a_values, so that its memory can be used for many rows.
void ReadNumbers(std::string_view a_text, std::vector<double>& a_values);

/// Text is stored in bytea as UTF-8.
pqxx::binarystring WriteText(std::wstring_view a_text);
std::wstring ReadText(const pqxx::field& a_field);
/// Narrow names: CP1250 here, UTF-8 in the database. DamagedData for a name that CP1250 can't hold.
pqxx::binarystring WriteName(std::string_view a_name);
std::string ReadName(const pqxx::field& a_field);

/// Texts of libpqxx and of the server are UTF-8, those of this program's log CP1250.
std::string ToLogText(std::string_view a_utf8);
/// What the exception in flight says, in CP1250: the texts of libpqxx are UTF-8, all others are our own.
std::string ReasonInFlight();
/// Whether the exception in flight is about the values asked for, and not about the server or the connection to it.
bool IsDamageInFlight();

} // namespace SqlRowForm
