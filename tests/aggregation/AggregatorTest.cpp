#include "aggregation/Aggregator.h"

#include "platform/CodePage.h"
#include "support/RaisedText.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

#include <gmock/gmock.h>

namespace {

/// A row under test: fields that a call may change, open, high, low, close and volume.
struct Row {
    NDateTime time;
    std::array<double, 5> values{};

    std::vector<double*> Fields()
    {
        std::vector<double*> fields;
        for (double& value : values)
            fields.push_back(&value);
        return fields;
    }
};

NDateTime At(unsigned long a_hour, unsigned long a_minute, unsigned long a_second = 0,
             unsigned long a_day = 1)
{
    return {2021, 3, a_day, a_hour, a_minute, a_second, 0};
}

class AggregatorTest : public ::testing::Test {
protected:
    bool Push(Aggregator& a_aggregator, Row& a_row, bool a_useOhl = false)
    {
        std::vector<double*> fields = a_row.Fields();
        return a_aggregator.SumWithWindow(&a_row.time, &fields, a_useOhl);
    }

    static Row Tick(const NDateTime& a_time, double a_price, double a_volume)
    {
        return {a_time, {0.0, 0.0, 0.0, a_price, a_volume}};
    }

    const std::vector<EAggrType> m_types = {EAggrTypeOhlc, EAggrTypeSum};
};

template<typename Call>
std::string MessageOf(Call a_call)
{
    return kalvento::tests::RaisedText<KalventoException>(a_call);
}

} // namespace

TEST_F(AggregatorTest, AfterAFoldRowsWaitForTheCurrentRecord)
{
    Aggregator aggregator(EIntervalMinute, 5, ELastRecordTime, m_types);
    Row row = Tick(At(10, 0), 10, 1);
    ASSERT_EQ(aggregator.Aggregate(EIntervalTick, 1, 1, &row.time, row.Fields()), 1U);

    const std::string waits = "Aggregator::SumWithWindow\t";
    Row live = Tick(At(10, 1), 11, 1);
    EXPECT_THAT(MessageOf([&] { Push(aggregator, live); }), ::testing::StartsWith(waits));
    EXPECT_THAT(MessageOf([&] { aggregator.Aggregate(EIntervalTick, 1, 1, &live.time, live.Fields()); }),
                ::testing::StartsWith(waits));

    auto fields = row.Fields();
    aggregator.SetCurrentRecord(&row.time, &fields);
    EXPECT_TRUE(Push(aggregator, live));
    EXPECT_THAT(live.values, ::testing::ElementsAre(10, 11, 10, 11, 2));
}

TEST_F(AggregatorTest, ACopyOpensItsOwnWindow)
{
    Aggregator source(EIntervalMinute, 5, ELastRecordTime, m_types);
    Row row = Tick(At(10, 0), 10, 1);
    Push(source, row);
    Aggregator copy(source);
    Aggregator moved(std::move(source));
    Row next = Tick(At(10, 1), 11, 1);
    EXPECT_FALSE(Push(copy, next));
    next = Tick(At(10, 1), 11, 1);
    EXPECT_TRUE(Push(moved, next));
    // A moved-from object and its copies refuse everything and crash nowhere.
    Aggregator hollow(source); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    EXPECT_THROW(Push(hollow, next), KalventoException);
    EXPECT_THROW(hollow.Aggregate(EIntervalTick, 1, 1, &next.time, next.Fields()), KalventoException);
    NDateTime begin;
    hollow.GetWindowLimits(At(10, 0), &begin, nullptr);
    EXPECT_TRUE(begin.IsEmpty());
}

TEST_F(AggregatorTest, RefusalsSayWhereAndWhy)
{
    const auto make = [&](EInterval a_interval, unsigned short a_multiplicity,
                          std::vector<EAggrType> a_types) {
        return MessageOf([&] { Aggregator(a_interval, a_multiplicity, ELastRecordTime, a_types); });
    };
    Row row = Tick(At(10, 0), 1, 1);
    const auto fold = [&](EInterval a_interval, unsigned short a_multiplicity, unsigned int a_count,
                          std::vector<double*> a_columns) {
        Aggregator aggregator(EIntervalMinute, 5, ELastRecordTime, m_types);
        return MessageOf(
            [&] { aggregator.Aggregate(a_interval, a_multiplicity, a_count, &row.time, a_columns); });
    };
    const auto sum = [&](std::vector<double*> a_fields) {
        Aggregator aggregator(EIntervalMinute, 5, ELastRecordTime, m_types);
        return MessageOf([&] { aggregator.SumWithWindow(&row.time, &a_fields, false); });
    };
    const std::vector<double*> columns = row.Fields();
    std::vector<double*> withNull = columns;
    withNull.front() = nullptr;
    const auto first = [&](std::ptrdiff_t a_count) {
        return std::vector<double*>(columns.begin(), columns.begin() + a_count);
    };
    const std::tuple<std::string, const char*, const char*> cases[] = {
        {make(EIntervalMinute, 1, {}), "Aggregator::InitAggrTypeForSeries",
         "Wymagane jest minimum jedno pole oprócz czasu."_cp1250},
        {make(EIntervalMinute, 1, {EAggrTypeLast}), "Aggregator::InitAggrTypeForSeries",
         "Niedopuszczalny typ agregacji dla pola."_cp1250},
        {make(EIntervalMinute, 1, {EAggrTypeOhlc, EAggrTypeOhlc}), "Aggregator::InitAggrTypeForSeries",
         "Niedopuszczalny typ agregacji dla pola."_cp1250},
        {fold(EIntervalMinute, 0, 1, columns), "Aggregator::Aggregate",
         "Krotność interwału wejściowego musi być większa od zera."_cp1250},
        {fold(EIntervalMinute, 6, 1, columns), "Aggregator::Aggregate",
         "Nielegalny kierunek agregacji."_cp1250},
        {fold(EIntervalHour, 1, 1, columns), "Aggregator::Aggregate",
         "Nielegalny kierunek agregacji."_cp1250},
        {fold(EIntervalTick, 1, 1, first(1)), "Aggregator::Aggregate",
         "Liczba pól niezgodna z inicjacją."_cp1250},
        {fold(EIntervalTick, 1, 1, withNull), "Aggregator::Aggregate",
         "Liczba pól niezgodna z inicjacją."_cp1250},
        {fold(EIntervalTick, 1, 0, columns), "Aggregator::Aggregate",
         "Próba agregacji historii o zerowej długości."_cp1250},
        {sum(first(2)), "Aggregator::SumWithWindow", "Wymagane pola na OHLC."_cp1250},
        {sum(first(4)), "Aggregator::SumWithWindow", "Liczba pól niezgodna z inicjacją."_cp1250},
    };
    for (const auto& [message, place, text] : cases) {
        EXPECT_THAT(message, ::testing::StartsWith(std::string(place) + "\t"));
        EXPECT_THAT(message, ::testing::EndsWith(std::string("! ") + text));
    }
}

TEST_F(AggregatorTest, ClosingTimeOfADayFailsAtItsFirstRowAndLeavesTheColumns)
{
    // Accepted at construction, since only the first window to open knows that it can't be stamped.
    Aggregator aggregator(EIntervalDay, 1, EMetaStockWindowEnd, m_types);
    Row row = Tick(At(10, 0), 7, 3);
    EXPECT_THAT(MessageOf([&] { aggregator.Aggregate(EIntervalTick, 1, 1, &row.time, row.Fields()); }),
                ::testing::StartsWith("AggrDayWindow::GetBeginingOfNextWindowTime\t"));
    EXPECT_THAT(row.values, ::testing::ElementsAre(0, 0, 0, 7, 3));
    EXPECT_EQ(row.time, At(10, 0));
    // Nothing waits for a current record after a failure.
    EXPECT_THAT(MessageOf([&] { Push(aggregator, row); }), ::testing::StartsWith("nothing"));
}
