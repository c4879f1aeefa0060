#pragma once

#include "settings/TakeSetting.h"
#include "time/EInterval.h"
#include "time/IntervalAndMultiplicity.h"

#include <string_view>

namespace kalvento::host {

/// What a program tells a screen module when it starts, as options of its plug-in. An absent key leaves the default.
struct ScreenOptions {
    static constexpr std::string_view XML_INTERVAL_ID = "IntervalId";
    static constexpr std::string_view XML_MULTIPLICITY = "Multiplicity";
    static constexpr std::string_view XML_PLAIN = "Plain";
    static constexpr std::string_view XML_BOOK = "Book";
    static constexpr std::string_view XML_TRADES = "Trades";
    static constexpr std::string_view XML_CANDLES = "Candles";
    static constexpr std::string_view XML_EXIT_AT_END = "ExitAtEnd";
    static constexpr std::string_view XML_IDLE_EXIT = "IdleExit";

    IntervalAndMultiplicity interval = {EIntervalMinute, 1};
    bool plain = false;        ///< Lines on standard output instead of a screen.
    bool book = false;         ///< Plain: lines of the order book too.
    bool trades = false;       ///< Plain: lines of transactions too.
    unsigned int candles = 0;  ///< Plain: candles of the past to print; 0: all.
    bool exitAtEnd = false;    ///< Ends the host when all subscriptions have ended.
    unsigned int idleExit = 0; ///< Ends the host after so many seconds without data; 0: never.

    ScreenOptions() = default;
    explicit ScreenOptions(const Settings& a_settings)
    {
        const auto read = [&](std::string_view a_key, auto& a_value) {
            TakeSetting(a_settings, a_key, a_value);
        };
        int intervalId = EIntervalMinute;
        unsigned int multiplicity = 1;
        read(XML_INTERVAL_ID, intervalId);
        read(XML_MULTIPLICITY, multiplicity);
        read(XML_PLAIN, plain);
        read(XML_BOOK, book);
        read(XML_TRADES, trades);
        read(XML_CANDLES, candles);
        read(XML_EXIT_AT_END, exitAtEnd);
        read(XML_IDLE_EXIT, idleExit);
        const IntervalAndMultiplicity asked(static_cast<EInterval>(intervalId), multiplicity);
        if (asked.IsValid())
            interval = asked;
    }

    /// Writes all of them where the constructor reads them.
    void Write(Settings& a_settings) const
    {
        a_settings[XML_INTERVAL_ID] = static_cast<int>(interval.GetInterval());
        a_settings[XML_MULTIPLICITY] = interval.GetMultiplicity();
        a_settings[XML_PLAIN] = plain;
        a_settings[XML_BOOK] = book;
        a_settings[XML_TRADES] = trades;
        a_settings[XML_CANDLES] = candles;
        a_settings[XML_EXIT_AT_END] = exitAtEnd;
        a_settings[XML_IDLE_EXIT] = idleExit;
    }
};

} // namespace kalvento::host
