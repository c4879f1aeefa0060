#include "platform/OleDate.h"
#include "time/DateTimeTools.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

void Require(bool a_holds)
{
    if (!a_holds)
        std::abort();
}

// Whatever was parsed is either a date that its own day number gives back, or says that it is none.
void CheckTime(const NDateTime& a_time)
{
    const auto back = NDateTime::FromCOle(a_time.ToOle());
    Require(back.IsValid() == a_time.IsValid());
    if (a_time.IsValid())
        Require(back.GetAbsoluteTime() == a_time.GetAbsoluteTime() &&
                back.GetDayOfYear() == a_time.GetDayOfYear());
    else
        Require(a_time.GetDayOfYear() == 0);
}

void CheckTime(const std::optional<NDateTime>& a_time)
{
    if (a_time)
        CheckTime(*a_time);
}

void CheckIso8601(std::string_view a_text)
{
    try {
        CheckTime(DateTimeTools::ParseDateIso8601(a_text));
    } catch (const std::invalid_argument&) {
        return; // the documented refusal
    }
}

// Every number is a day number for somebody who reads a damaged file.
void CheckDayNumber(double a_number)
{
    NDateTime time = NDateTime::FromDouble(a_number);
    Require(time.IsValid() == OleDate::ToCalendar(a_number).has_value());
    if (time.IsValid())
        CheckTime(time);
    time.ShiftSec(-1);
    time.ShiftDays(1);
    Require(time.GetMonth() <= 15);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    // An own block of exactly that size, so that reading past the text is seen.
    const std::string bytes(reinterpret_cast<const char*>(a_data), a_size);
    const std::string_view text(bytes.data(), bytes.size());

    CheckTime(DateTimeTools::ParseDateYYYYMMDD(text));
    CheckTime(DateTimeTools::ParseDateYYMMDD(text));
    CheckTime(DateTimeTools::ParseTime(text));
    CheckTime(DateTimeTools::ParseDateTime(NDateTime(2021, 3, 1), text));
    CheckIso8601(text);
    if (text.size() >= 8) {
        CheckTime(DateTimeTools::ParseDateTime(text.substr(0, 8), text.substr(8)));
        double number = 0.0;
        std::memcpy(&number, text.data(), sizeof(number));
        CheckDayNumber(number);
    }
    return 0;
}
