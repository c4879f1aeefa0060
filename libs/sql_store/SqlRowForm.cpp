#include "sql_store/SqlRowForm.h"

#include "platform/CodePage.h"
#include "provider_kit/DamagedData.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

using kalvento::internal::MidnightWords;
using Words = kalvento::internal::NDateTimeWords;

[[noreturn]] void RaiseUnreadable(std::string_view a_text)
{
    const std::wstring shown = CodePage::Utf8ToWide(a_text).substr(0, 60); // whole letters
    throw DamagedData(std::string("Nieczytelna wartość w bazie: "_cp1250) + CodePage::WideToCp1250(shown));
}

template<class Number>
Number ReadWhole(const pqxx::field& a_field, Number a_lowest, Number a_highest)
{
    const std::string_view text(a_field.c_str(), a_field.size());
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < a_lowest || number > a_highest)
        RaiseUnreadable(text);
    return number;
}

} // namespace

std::optional<SqlRowForm::TimeColumns> SqlRowForm::WriteTime(const NDateTime& a_time)
{
    using namespace std::chrono;
    const year_month_day date{year(static_cast<int>(a_time.GetYear())),
                              month(static_cast<unsigned>(a_time.GetMonth())),
                              std::chrono::day(static_cast<unsigned>(a_time.GetDay()))};
    if (!a_time.IsValid() || !date.ok() || a_time.GetYear() < 1)
        return std::nullopt;
    const std::uint32_t second = a_time.GetAbsoluteTime();
    if (second >= TimeParts::S_secondsOfDay)
        return std::nullopt;
    // Fields of a time that was put together by hand may lie, and so does the year after 4095, of which some bits are cut
    // off: what would not come back, or not be found by its day, is not taken.
    const NDateTime back = MidnightWords(sys_days(date).time_since_epoch().count())
                               .At(a_time.ToDouble(), second, a_time.GetMilliSec());
    if (Words::Calendar(back) != Words::Calendar(a_time) || Words::Clock(back) != Words::Clock(a_time) ||
        !a_time.SameDay(NDateTime(a_time.GetYear(), a_time.GetMonth(), a_time.GetDay())))
        return std::nullopt;

    std::array<char, 16> day{};
    std::snprintf(day.data(), day.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return TimeColumns{day.data(), std::to_string(second), std::to_string(a_time.GetMilliSec()),
                       WriteNumber(a_time.ToDouble())};
}

NDateTime SqlRowForm::ReadTime(const pqxx::row& a_row, int a_first)
{
    using namespace std::chrono;
    static const auto S_firstDay = sys_days(year(1) / January / 1).time_since_epoch().count();
    static const auto S_lastDay = sys_days(year(4095) / December / 31).time_since_epoch().count();
    const auto days = ReadWhole<std::int32_t>(a_row[a_first], S_firstDay, S_lastDay);
    const auto second = ReadWhole<std::uint32_t>(a_row[a_first + 1], 0, TimeParts::S_secondsOfDay - 1);
    const auto counter = ReadWhole<std::uint32_t>(a_row[a_first + 2], 0, NDateTime::MaxMilisecond);
    const pqxx::field number = a_row[a_first + 3];
    return MidnightWords(days).At(ReadNumber({number.c_str(), number.size()}), second, counter);
}

std::string SqlRowForm::WriteNumber(double a_value)
{
    if (std::isnan(a_value))
        return "NaN";
    if (std::isinf(a_value))
        return a_value < 0 ? "-Infinity" : "Infinity";
    std::array<char, 40> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), a_value);
    return {text.data(), result.ptr};
}

double SqlRowForm::ReadNumber(std::string_view a_text)
{
    double value = 0;
    const auto [end, error] = std::from_chars(a_text.data(), a_text.data() + a_text.size(), value);
    if (error != std::errc() || end != a_text.data() + a_text.size())
        RaiseUnreadable(a_text);
    return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
}

std::string SqlRowForm::WriteNumbers(const std::vector<double>& a_values)
{
    std::string text = "{";
    for (const double value : a_values) {
        if (text.size() > 1)
            text += ',';
        text += WriteNumber(value);
    }
    return text += '}';
}

void SqlRowForm::ReadNumbers(std::string_view a_text, std::vector<double>& a_values)
{
    a_values.clear();
    if (a_text.size() < 2 || a_text.front() != '{' || a_text.back() != '}')
        RaiseUnreadable(a_text);
    std::string_view rest = a_text.substr(1, a_text.size() - 2);
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find(','), rest.size());
        a_values.push_back(ReadNumber(rest.substr(0, length)));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
}

pqxx::binarystring SqlRowForm::WriteText(std::wstring_view a_text)
{
    const std::string utf8 = CodePage::WideToUtf8(a_text);
    return {utf8.data(), utf8.size()};
}

std::wstring SqlRowForm::ReadText(const pqxx::field& a_field)
{
    return CodePage::Utf8ToWide(pqxx::binarystring(a_field).str());
}

pqxx::binarystring SqlRowForm::WriteName(std::string_view a_name)
{
    return WriteText(CodePage::Cp1250ToWide(a_name));
}

std::string SqlRowForm::ReadName(const pqxx::field& a_field)
{
    const std::wstring wide = ReadText(a_field);
    std::string name = CodePage::WideToCp1250(wide);
    if (!CodePage::FitsCp1250(wide))
        throw DamagedData("nazwa z literami spoza strony kodowej CP1250: "_cp1250 + name);
    return name;
}

std::string SqlRowForm::ToLogText(std::string_view a_utf8)
{
    return CodePage::WideToCp1250(CodePage::Utf8ToWide(a_utf8));
}

std::string SqlRowForm::ReasonInFlight()
{
    try {
        throw;
    } catch (const pqxx::pqxx_exception& failure) {
        std::string reason = ToLogText(failure.base().what());
        reason.erase(reason.find_last_not_of(" \r\n") + 1);
        return reason;
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

bool SqlRowForm::IsDamageInFlight()
{
    try {
        throw;
    } catch (const DamagedData&) {
        return true;
    } catch (const pqxx::conversion_error&) {
        return true;
    } catch (const pqxx::sql_error& failure) {
        // Values that can't be computed with, and pages that the server can't read;
        // source: https://www.postgresql.org/docs/15/errcodes-appendix.html
        return failure.sqlstate().starts_with("22") || failure.sqlstate().starts_with("XX");
    } catch (...) {
        return false;
    }
}
