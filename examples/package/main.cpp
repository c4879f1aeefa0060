#include "folding/AggregatorWrapper.h"
#include "series/History.h"
#include "series/Record.h"
#include "time/NDateTime.h"

#include <cstdio>
#include <set>
#include <tuple>

// Three trades of a day become a candle of five minutes, and a fourth, live one, goes on with it.
int main()
{
    const std::set<DSProp> properties{DSProp(Price), DSProp(Volume)};
    AggregatorWrapper candles(properties, ELastRecordTime, EIntervalMinute, 5);

    History history(properties, EIntervalTick, 1);
    Record tick(properties);
    const auto set = [&tick](unsigned int a_second, double a_price, double a_volume) {
        tick.SetTime(NDateTime(2024, 1, 2, 9, 1, a_second, 0));
        tick.SetData(Price, a_price);
        tick.SetData(Volume, a_volume);
    };
    for (const auto& [second, price, volume] :
         {std::tuple(1U, 10.0, 5.0), {7U, 12.0, 1.0}, {30U, 9.0, 2.0}}) {
        set(second, price, volume);
        history.AddData(tick);
    }
    Record last(properties);
    if (!candles.AgregateHistory(history) || !candles.SetCurrentRecord(last = history.GetLastRecord()))
        return 1;

    set(45, 11.0, 4.0);
    bool replacesLast = false;
    if (!candles.AggregateRecord(tick, replacesLast))
        return 1;
    std::printf("%s: open %g, high %g, low %g, close %g, volume %g\n",
                replacesLast ? "same candle" : "new candle", tick.find(IntervalOpen)->second,
                tick.find(IntervalMax)->second, tick.find(IntervalMin)->second, tick.find(Price)->second,
                tick.find(Volume)->second);
    return 0;
}
