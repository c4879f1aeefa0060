#include "aggregation/AggrWindowsFactory.h"
#include "platform/CodePage.h"
#include "support/PlainAggregator.h"
#include "support/RaisedText.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

namespace {

using Date = NDateTime;

std::string Text(const NDateTime& a_time)
{
    return "day number " + std::to_string(a_time.ToDouble());
}

auto Window(EInterval a_interval, unsigned short a_multiplicity)
{
    return AggrWindowsFactory::GetAggrWindowClass(a_interval, a_multiplicity, ELastRecordTime);
}

} // namespace

// Of the others the law below tells.
// They share their tables, of which each looks into those of its own year.
TEST(AggrWindowsTest, WindowsOfWeeksDoNotDisturbEachOther)
{
    const auto one = Window(EIntervalWeek, 1);
    const auto other = Window(EIntervalWeek, 1);
    const NDateTime lastOfLeapYear(2012, 12,
                                   31); // 2012 began on a Sunday: its 31 December is a week of its own
    const NDateTime lastOfYear(2013, 12, 31);
    EXPECT_EQ(one->GetWindowNumber(lastOfLeapYear), 53);
    EXPECT_EQ(other->GetWindowNumber(lastOfYear), 52);
    EXPECT_EQ(one->GetBeginingOfWindowTime(lastOfLeapYear, 52), NDateTime(2012, 12, 24));
    EXPECT_EQ(other->GetBeginingOfWindowTime(lastOfYear, 52), NDateTime(2013, 12, 30));
    EXPECT_EQ(one->GetWindowNumber(lastOfLeapYear), 53);
}

TEST(AggrWindowsTest, LimitsOfWeeks)
{
    const std::tuple<unsigned short, NDateTime, NDateTime, NDateTime> cases[] = {
        // The border of a short first week reaches past its Sunday.
        {1, Date(2021, 1, 3), Date(2021, 1, 1), Date(2021, 1, 7)},
        {1, Date(2024, 1, 7), Date(2024, 1, 1), Date(2024, 1, 7)},
        {1, Date(2012, 12, 31), Date(2012, 12, 31), Date(2012, 12, 31)},
        {3, Date(2021, 12, 31), Date(2021, 12, 20), Date(2021, 12, 31)},
    };
    for (const auto& [multiplicity, time, begin, end] : cases) {
        SCOPED_TRACE(Text(time));
        std::pair<NDateTime, NDateTime> limits;
        const auto window = Window(EIntervalWeek, multiplicity);
        window->GetWindowLimits(time, &limits.first, &limits.second);
        window->GetWindowLimits(time, nullptr, nullptr);
        EXPECT_EQ(limits, std::pair(begin, end));
    }
}

TEST(AggrWindowsTest, MembershipFollowsTheCalendarForAnyStreamOfTimes)
{
    std::mt19937_64 random(3);
    static constexpr unsigned short limits[] = {0, 9, 59, 59, 24, 365, 51, 11, 30};
    for (int round = 0; round < 400; ++round) {
        const auto interval = static_cast<EInterval>(2 + random() % 7);
        const auto multiplicity = static_cast<unsigned short>(1 + random() % limits[interval]);
        SCOPED_TRACE(std::to_string(interval) + " x " + std::to_string(multiplicity));
        const auto window = Window(interval, multiplicity);
        long open = -2;
        unsigned long openScope = 0;
        double day = 36526.0 + static_cast<double>(random() % 20000);
        for (int row = 0; row < 300; ++row) {
            day += static_cast<double>(random() % 1000) / (interval >= EIntervalDay ? 100.0 : 86400.0);
            const NDateTime time = NDateTime::FromDouble(day);
            const long number = plain::WindowNumber(interval, multiplicity, time);
            // Below a day the day of the year counts and not the date.
            const unsigned long scope = interval < EIntervalDay     ? time.GetDayOfYear()
                                        : interval == EIntervalYear ? 0
                                                                    : time.GetYear();
            const bool expected = open == number && openScope == scope;
            ASSERT_EQ(window->IsInCurrentWindow(time), expected) << Text(time);
            open = number;
            openScope = scope;
        }
    }
}

TEST(AggrWindowsTest, NumberBeginAndBorderAreThoseOfTheWindowThatATimeIsIn)
{
    std::mt19937_64 random(7);
    static constexpr unsigned short limits[] = {0, 0, 59, 59, 24, 365, 51, 11, 30};
    for (std::uint32_t place = EIntervalSecond; place <= EIntervalYear; ++place) {
        const auto interval = static_cast<EInterval>(place);
        for (unsigned short multiplicity = 1; multiplicity <= limits[place]; ++multiplicity) {
            const auto window = Window(interval, multiplicity);
            for (int round = 0; round < 20; ++round) {
                const NDateTime time =
                    NDateTime::FromDouble(36526.0 + static_cast<double>(random() % 1'700'000'000) / 86400.0);
                SCOPED_TRACE(std::to_string(place) + " x " + std::to_string(multiplicity) + " at " +
                             Text(time));
                const int number = window->GetWindowNumber(time);
                ASSERT_EQ(number, plain::WindowNumber(interval, multiplicity, time));
                NDateTime begin;
                NDateTime end;
                window->GetWindowLimits(time, &begin, &end);
                ASSERT_EQ(window->GetBeginingOfWindowTime(time, number), begin);
                ASSERT_EQ(window->GetWindowNumber(begin), number);
                // Of months the border is the last one's first day.
                NDateTime border = window->GetBorderOfWindowTime(time, number);
                if (interval == EIntervalMonth) {
                    ASSERT_EQ(border.GetDay(), 1U);
                    ASSERT_EQ(border.GetMonth(), end.GetMonth());
                } else
                    ASSERT_EQ(border, end);
                window->IsInCurrentWindow(begin);
                ASSERT_TRUE(window->IsInCurrentWindow(time));
                // The border of a short first week reaches into the next window.
                if (interval != EIntervalWeek) {
                    ASSERT_TRUE(window->IsInCurrentWindow(border));
                    ASSERT_TRUE(window->IsInCurrentWindow(end));
                    end.ShiftSec(interval < EIntervalDay ? 1 : 86400);
                    ASSERT_FALSE(window->IsInCurrentWindow(end));
                    ASSERT_FALSE(window->IsInCurrentWindow(time));
                    if (interval < EIntervalDay) {
                        ASSERT_EQ(window->GetBeginingOfNextWindowTime(time, number), end);
                    }
                }
                begin.ShiftSec(-1);
                ASSERT_FALSE(window->IsInCurrentWindow(begin));
            }
        }
    }
}

TEST(AggrWindowsTest, ARowAYearLaterOnTheSameDayOfYearIsTheSameWindow)
{
    const auto minutes = Window(EIntervalMinute, 5);
    EXPECT_FALSE(minutes->IsInCurrentWindow(Date(2021, 3, 1, 10, 0, 0, 0)));
    EXPECT_TRUE(minutes->IsInCurrentWindow(Date(2022, 3, 1, 10, 4, 0, 0)));
}

TEST(AggrWindowsTest, TickWindowsCountRowsOfADay)
{
    const auto window = Window(EIntervalTick, 3);
    const NDateTime day = Date(2021, 3, 1);
    for (const bool expected : {false, true, true, false, true})
        EXPECT_EQ(window->IsInCurrentWindow(day), expected);
    EXPECT_FALSE(window->IsInCurrentWindow(Date(2021, 3, 2)));
    EXPECT_TRUE(window->IsInCurrentWindow(Date(2021, 3, 2)));
    EXPECT_FALSE(Window(EIntervalTick, 1)->IsInCurrentWindow(day));
}

TEST(AggrWindowsTest, RefusedIntervalsAndCalls)
{
    const auto message = [](auto a_call) {
        const std::string text = kalvento::tests::RaisedText<KalventoException>(a_call);
        const std::size_t number = text.find('\t');
        return number == std::string::npos ? text : text.substr(0, number) + text.substr(text.find(" - "));
    };
    const auto make = [&](int a_interval, unsigned short a_multiplicity,
                          EAggrTimeResult a_result = ELastRecordTime) {
        return message([=] {
            AggrWindowsFactory::GetAggrWindowClass(static_cast<EInterval>(a_interval), a_multiplicity,
                                                   a_result);
        });
    };
    for (const int interval : {0, 9, -1})
        EXPECT_EQ(
            make(interval, 1),
            "AggrWindowsFactory::GetAggrWindowClass - Wyjątek AggrWindowsFactory! Nieznany interwał."_cp1250);
    for (int interval = 1; interval <= 8; ++interval)
        EXPECT_EQ(make(interval, 0),
                  "AggrBase::AggrBase - Wyjątek AggrBase! Krotność interwału musi być większa od 0."_cp1250);
    const std::tuple<EInterval, unsigned short, std::string, const char*> limits[] = {
        {EIntervalSecond, 59, "AggrSecondWindow", "sekundowego"},
        {EIntervalMinute, 59, "AggrMinuteWindow", "minutowego"},
        {EIntervalHour, 24, "AggrHourWindow", "godzinowego"},
        {EIntervalDay, 365, "AggrDayWindow", "dziennego"},
        {EIntervalWeek, 51, "AggrWeekWindow", "tygodniowego"},
        {EIntervalMonth, 11, "AggrMonthWindow", "miesięcznego"_cp1250},
    };
    for (const auto& [interval, greatest, window, kind] : limits) {
        EXPECT_EQ(make(interval, greatest), "nothing raised");
        EXPECT_EQ(make(interval, static_cast<unsigned short>(greatest + 1)),
                  window + "::" + window + " - Wyjątek "_cp1250 + window +
                      "! Zbyt duża krotność interwału "_cp1250 + kind + ".");
    }
    EXPECT_EQ(make(EIntervalTick, 65535), "nothing raised");
    NDateTime begin;
    const std::pair<std::string, const char*> calls[] = {
        {make(EIntervalTick, 1, EWindowBegin),
         "AggrTickWindow::AggrTickWindow - Wyjątek AggrTickWindow! Nieprawidłowy typ agregacji czasu dla interwału tickowego."_cp1250},
        {message([] { Window(EIntervalTick, 1)->GetBorderOfWindowTime(NDateTime(), 0); }),
         "AggrTickWindow::GetBorderOfWindowTime - Wyjątek AggrSecondWindow! Niedopuszczalne wywołanie GetBorderOfWindowTime."_cp1250},
        {message([] { Window(EIntervalTick, 1)->GetWindowNumber(NDateTime()); }),
         "AggrTickWindow::GetWindowNumber - Wyjątek AggrTickWindow! Niedopuszczalne wywołanie GetWindowNumber."_cp1250},
        {message([] { Window(EIntervalYear, 1)->GetBeginingOfNextWindowTime(NDateTime(), 0); }),
         "AggrYearWindow::GetBeginingOfNextWindowTime - Wyjątek AggrYearWindow! EOD w stylu MetaStocka agreguj z innym typem czasu niż EMetaStockWindowEnd."_cp1250},
        {message([&] { Window(EIntervalWeek, 1)->GetWindowLimits(NDateTime(2021, 2, 30), &begin, nullptr); }),
         "AggrWeekWindow::GetWindowLimits - Błędny indeks dnia w roku."_cp1250}};
    for (const auto& [raised, expected] : calls)
        EXPECT_EQ(raised, expected);
}

TEST(AggrWindowsTest, NumbersOfNoWindowStayInsideTheTables)
{
    for (std::uint32_t interval = EIntervalSecond; interval <= EIntervalYear; ++interval) {
        const auto window = Window(static_cast<EInterval>(interval), 7);
        for (const int number : {-1, -2147483647 - 1, 2147483647, 100000}) {
            const NDateTime time = Date(2021, 3, 1);
            window->GetBeginingOfWindowTime(time, number);
            window->GetBorderOfWindowTime(time, number);
            if (interval < EIntervalDay)
                window->GetBeginingOfNextWindowTime(time, number);
        }
    }
}
