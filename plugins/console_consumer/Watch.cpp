#include "console_consumer/Watch.h"

#include "assets/AssetParams.h"
#include "console_consumer/PlainLines.h"
#include "folding/PieceFolder.h"
#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "platform/ShownText.h"
#include "series/CurrentState.h"
#include "series/Synchronization.h"

#include <algorithm>
#include <utility>

std::unique_ptr<Watch> Watch::Make(const Asset& a_asset, IntervalAndMultiplicity a_interval,
                                   const kalvento::host::ScreenOptions& a_options)
{
    if (!a_asset.IsProviderSet())
        return nullptr;
    const AssetParams offered = a_asset.GetParams();
    const std::set<DSProp> series = a_asset.GetProvider()->GetAssetSeries(a_asset);
    if (offered.GetKindData() == 0 || std::ranges::find(series, Price, &DSProp::GetSeriesID) == series.end())
        return nullptr;

    RequestParams request(offered.GetKindData(), true);
    IntervalAndMultiplicity asked = SubscriptionCandles::IntervalToAsk(a_interval);
    if (offered.IsSetHistory() && offered.begin() != offered.end()) {
        const IntervalAndMultiplicity own(offered.begin()->first, offered.GetMultiplicity());
        if (!PieceFolder::Reaches(own, asked))
            asked = own;
        if (!PieceFolder::Reaches(asked, a_interval))
            a_interval = asked;
        const std::optional<RangeData::Dates> dates = offered.GetDates(asked.GetInterval());
        if (dates && offered.IsSetOnlyHistory())
            request.SetDates(*dates);
    }
    request.SetIntervalAndMultiplicity(asked.GetInterval(), asked.GetMultiplicity());
    return std::unique_ptr<Watch>(new Watch(a_asset, series, std::move(request), a_interval, a_options));
}

Watch::Watch(const Asset& a_asset, const std::set<DSProp>& a_series, RequestParams a_request,
             IntervalAndMultiplicity a_interval, const kalvento::host::ScreenOptions& a_options)
    : m_asset(a_asset),
      m_symbol(kalvento::internal::ShownText::OneLine(CodePage::Cp1250ToUtf8(a_asset.GetShortName()))),
      m_request(std::move(a_request)),
      m_options(a_options),
      m_model(a_series, a_interval.GetInterval(), static_cast<unsigned short>(a_interval.GetMultiplicity())),
      m_pastPrinted(!m_request.IsSetHistory() && !m_request.IsSetSynchro())
{
    const auto price = a_series.find(DSProp(Price));
    if (price != a_series.end())
        m_decimals = std::clamp(static_cast<int>(price->GetMaxPrecision()), 0, 8);
}

void Watch::SetOperations(const HistoryOperations& a_operations)
{
    const std::lock_guard lock(m_mutex);
    PrintChanges([&] { m_model.SetOperations(a_operations); });
    if (m_lastPrice)
        NoteLastCandle();
}

void Watch::AddHistory(History&& a_history)
{
    const std::lock_guard lock(m_mutex);
    m_model.AddHistory(std::move(a_history));
}

void Watch::HistoryEnd()
{
    const std::lock_guard lock(m_mutex);
    m_model.HistoryEnd();
    if (!m_request.IsSetSynchro())
        PrintPast();
    if (!m_lastPrice)
        NoteLastCandle();
}

void Watch::SetSynchronization(Synchronization&& a_synchronization)
{
    const std::lock_guard lock(m_mutex);
    PrintChanges([&] { m_model.SetSynchronization(std::move(a_synchronization)); });
    PrintPast();
    NoteLastCandle();
}

// What follows the past may change candles at any place: after a break of the connection, or by operations. Lines tell
// those that did.
template<class Change>
void Watch::PrintChanges(Change a_change)
{
    if (!m_pastPrinted || !m_options.plain) {
        a_change();
        return;
    }
    const History before = m_model.GetLastCandles(m_model.GetCount());
    a_change();
    const auto isSame = [&](std::size_t a_place) {
        const Record candle = m_model.GetCandle(a_place);
        auto column = before.begin();
        return candle.GetTime() == before.TimeSeries()[a_place] &&
               std::all_of(candle.begin(), candle.end(), [&](const auto& a_value) {
                   return (column++)->second[a_place] == a_value.second;
               });
    };
    const std::size_t known = before.GetRecordsCount();
    for (std::size_t place = 0; place < m_model.GetCount(); ++place) {
        const char* const state = place >= known ? "new" : place + 1 == known ? "changed" : "corrected";
        if (place >= known || !isSame(place))
            m_lines += PlainLines::Candle(m_symbol, state, m_model.GetCandle(place));
    }
}

void Watch::PrintPast()
{
    if (m_pastPrinted)
        return;
    m_pastPrinted = true;
    if (!m_options.plain)
        return;
    const std::size_t count = m_model.GetCount();
    const std::size_t shown =
        m_options.candles == 0 ? count : std::min<std::size_t>(count, m_options.candles);
    for (std::size_t place = count - shown; place < count; ++place)
        m_lines += PlainLines::Candle(m_symbol, "history", m_model.GetCandle(place));
}

void Watch::AddRecord(const Record& a_record)
{
    const std::lock_guard lock(m_mutex);
    const std::optional<SubscriptionCandles::Change> change = m_model.AddRecord(a_record);
    if (!change)
        return;
    NotePrice(change->candle.find(Price)->second);
    NoteTime(a_record.GetTime());
    if (m_options.plain)
        m_lines += PlainLines::Candle(m_symbol, change->isNew ? "new" : "changed", change->candle);
}

void Watch::SetState(const CurrentState& a_state)
{
    const std::lock_guard lock(m_mutex);
    for (const auto& [seriesId, value] : a_state)
        if (value.IsSet())
            m_day[seriesId] = value.value;
    if (a_state.TimeFieldIsSet())
        NoteTime(a_state.GetTime().value);
    const auto price = a_state.find(Price);
    if (price != a_state.end() && price->second.IsSet())
        NotePrice(price->second.value);
}

void Watch::SetOffers(const Offers& a_offers)
{
    const std::lock_guard lock(m_mutex);
    if (!m_offers)
        m_offers = a_offers;
    else
        m_offers->MergeChangesValues(a_offers);
    if (m_options.plain && m_options.book)
        m_lines += PlainLines::Book(m_symbol, *m_offers, m_time);
}

void Watch::SetTrades(const LatestRecords& a_trades)
{
    const std::lock_guard lock(m_mutex);
    std::vector<LatestRecords::LastRecord> trades(a_trades.begin(), a_trades.end());
    if (m_options.plain && m_options.trades) {
        // The newest are in front, so the new ones end at the former newest one.
        auto known = trades.end();
        if (!m_trades.empty())
            known = std::find_if(trades.begin(), trades.end(), [&](const auto& a_trade) {
                return a_trade.time == m_trades.front().time && a_trade.price == m_trades.front().price &&
                       a_trade.volume == m_trades.front().volume;
            });
        while (known != trades.begin())
            m_lines += PlainLines::Trade(m_symbol, *--known);
    }
    m_trades = std::move(trades);
    if (!m_trades.empty())
        NoteTime(m_trades.front().time);
}

bool Watch::End(std::wstring_view a_reason)
{
    const std::lock_guard lock(m_mutex);
    PrintPast();
    // The first reason is the cause: a deleted symbol is followed by the end of the request.
    if (std::exchange(m_hasEnded, true))
        return false;
    m_endReason = a_reason;
    return true;
}

bool Watch::HasEnded() const
{
    const std::lock_guard lock(m_mutex);
    return m_hasEnded;
}

Watch::Snapshot Watch::Look(std::size_t a_candleCount) const
{
    const std::lock_guard lock(m_mutex);
    const auto ofDay = [this](ESeriesId a_seriesId) {
        const auto found = m_day.find(a_seriesId);
        return found == m_day.end() ? std::nullopt : std::optional(found->second);
    };
    return {m_model.GetInterval(),
            m_model.GetLastCandles(a_candleCount),
            m_offers,
            m_trades,
            m_lastPrice,
            m_direction,
            ofDay(Reference),
            m_decimals,
            m_model.HasHistoryEnded(),
            m_endReason,
            m_time,
            ofDay(Open),
            ofDay(Max),
            ofDay(Min),
            ofDay(VolumeTotal)};
}

std::string Watch::TakeLines()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_lines, {});
}

void Watch::NotePrice(double a_price)
{
    if (m_lastPrice && a_price != *m_lastPrice)
        m_direction = a_price > *m_lastPrice ? 1 : -1;
    m_lastPrice = a_price;
}

void Watch::NoteTime(const NDateTime& a_time)
{
    if (!m_time || *m_time < a_time)
        m_time = a_time;
}

void Watch::NoteLastCandle()
{
    if (m_model.GetCount() == 0)
        return;
    const Record last = m_model.GetCandle(m_model.GetCount() - 1);
    NotePrice(last.find(Price)->second);
    NoteTime(last.GetTime());
}
