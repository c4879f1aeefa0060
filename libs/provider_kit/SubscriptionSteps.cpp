#include "provider_kit/SubscriptionSteps.h"

#include "aggregation/AggrWindowsFactory.h"
#include "aggregation/Aggregator.h"
#include "modules/IConsumer.h"
#include "provider_kit/SessionState.h"
#include "provider_kit/StoreParts.h"
#include "series/Synchronization.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace kalvento::internal {

namespace {

unsigned int OfferedKinds(const StoreInstrument& a_instrument)
{
    constexpr unsigned int always = ParamsBase::S_kindDataHistory | ParamsBase::S_kindDataCS;
    return a_instrument.live ? always | ParamsBase::S_kindDataSynchro | ParamsBase::S_kindDataRecord : always;
}

// Empty after the last day of the calendar. By the number of the day: the year field can't hold 9999.
std::optional<NDateTime> DayAfter(const NDateTime& a_time)
{
    const NDateTime day = NDateTime::FromDouble(a_time.GetAbsoluteDay() + 1.0);
    return day.IsValid() ? std::optional(day) : std::nullopt;
}

Synchronization SynchronizationOf(History&& a_rows)
{
    Synchronization::Columns columns;
    for (auto& [series, values] : a_rows)
        columns.emplace_back(series, std::move(values));
    return {EIntervalTick, 1, std::move(a_rows).TimeSeries(), std::move(columns)};
}

} // namespace

SubscriptionSteps::EStep SubscriptionSteps::Step(Served& a_served)
{
    if (a_served.IsOver())
        return EStepDone;
    // In the order of Served::EStage.
    static constexpr std::array<EStep (SubscriptionSteps::*)(Served&), Served::ELive> S_steps = {
        &SubscriptionSteps::Begin,      &SubscriptionSteps::MakeSession, &SubscriptionSteps::TellOperations,
        &SubscriptionSteps::FindPlaces, &SubscriptionSteps::TellHistory, &SubscriptionSteps::Synchronize,
        &SubscriptionSteps::CatchUp};
    if (a_served.stage < Served::ELive)
        return (this->*S_steps[a_served.stage])(a_served);
    return EStepDone;
}

SubscriptionSteps::EStep SubscriptionSteps::Begin(Served& a_served)
{
    const auto list = m_parts.instruments.GetIfRead();
    if (!list)
        return EStepWaits;
    const StoreInstrument* const instrument = list->Find(a_served.GetIsin());
    const RequestParams& request = a_served.GetParams().GetRequestParams();
    if (instrument == nullptr) {
        Refuse(a_served, L"Nieznany walor");
        return EStepDone;
    }
    if (!a_served.Wants(OfferedKinds(*instrument))) {
        Refuse(a_served, L"Walor nie ma notowań na żywo");
        return EStepDone;
    }
    const IntervalAndMultiplicity interval(request.GetInterval(), request.GetMultiplicity());
    if (request.IsSetHistory() && !PieceFolder::Reaches(instrument->interval, interval)) {
        Refuse(a_served, L"Waloru nie można pokazać w tym interwale");
        return EStepDone;
    }
    // Where history ends and what is live begins, whatever is added while the past is delivered. Before anything that
    // takes time: records asked for without a past start with the first row that comes from here on.
    a_served.endSynchronized = m_parts.store->GetRowCount(a_served.GetIsin());
    a_served.instrument = *instrument;
    // Without a history the interval of a request is free, and may be nonsense.
    a_served.interval = PieceFolder::Reaches(instrument->interval, interval)
                            ? interval
                            : IntervalAndMultiplicity(EIntervalTick, 1);
    a_served.stage = Served::ESession;
    return EStepMore;
}

SubscriptionSteps::EStep SubscriptionSteps::MakeSession(Served& a_served)
{
    if (a_served.Wants(ParamsBase::S_kindDataCS))
        EnsureSession(*a_served.instrument);
    a_served.stage = Served::EOperations;
    return EStepMore;
}

void SubscriptionSteps::Refuse(Served& a_served, std::wstring_view a_reason)
{
    m_parts.book.End(a_served, [&](IConsumer& a_consumer, unsigned int a_number) {
        a_consumer.RequestRefused(a_number, a_reason);
    });
}

// A request whose history is cut short can't have been served.
void SubscriptionSteps::CutOff(Served& a_served, std::wstring_view a_reason)
{
    if (a_served.historyDone || !a_served.Wants(ParamsBase::S_kindDataHistory))
        m_parts.book.End(a_served, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.RequestEnded(a_number);
        });
    else
        Refuse(a_served, a_reason);
}

SubscriptionSteps::EStep SubscriptionSteps::TellOperations(Served& a_served)
{
    a_served.mustCheckOperations = false;
    if (a_served.GetParams().GetRequestParams().NeedsDataOperationInfo()) {
        HistoryOperations operations = m_parts.ReadOperations(a_served.GetIsin());
        if (!a_served.operations || !OperationsKeeper::AreEqual(*a_served.operations, operations)) {
            SubscriptionBook::Tell(a_served, Served::S_allKinds,
                                   [&](IConsumer& a_consumer, unsigned int a_number) {
                                       a_consumer.ProcessOperations(a_number, operations);
                                   });
            a_served.operations = std::move(operations);
        }
    }
    if (!a_served.historyDone) {
        a_served.stage = Served::EPlaces;
        return EStepMore;
    }
    if (!a_served.mustSynchronize) {
        a_served.stage = Served::ELive;
        return EStepDone;
    }
    // From the window of the last row that was told: windows may have passed during the break.
    a_served.firstSynchronized = FindWindow(a_served, a_served.GetPosition());
    a_served.endSynchronized = m_parts.store->GetRowCount(a_served.GetIsin());
    a_served.mustSynchronize = false;
    a_served.stage = Served::ESynchronize;
    return EStepMore;
}

SubscriptionSteps::EStep SubscriptionSteps::FindPlaces(Served& a_served)
{
    const std::string& isin = a_served.GetIsin();
    const std::uint64_t count = a_served.endSynchronized;
    const bool synchronizes = a_served.instrument->live && a_served.Wants(ParamsBase::S_kindDataSynchro);
    a_served.firstSynchronized = synchronizes ? FindWindow(a_served, count) : count;
    if (a_served.Wants(ParamsBase::S_kindDataHistory)) {
        const RangeData::Dates dates = a_served.GetParams().GetRequestParams().GetDates();
        a_served.nextHistory = m_parts.store->FindRow(isin, TimeParts::MidnightOf(dates.from));
        a_served.endHistory = a_served.firstSynchronized;
        if (const auto afterLastDay = DayAfter(dates.to))
            a_served.endHistory = std::min(a_served.endHistory, m_parts.store->FindRow(isin, *afterLastDay));
        a_served.fold =
            std::make_unique<PieceFolder>(a_served.instrument->series, a_served.instrument->interval,
                                          a_served.interval, ELastRecordTime, PieceFolder::EPassSame);
    }
    a_served.stage = Served::EHistory;
    return EStepMore;
}

SubscriptionSteps::EStep SubscriptionSteps::TellHistory(Served& a_served)
{
    constexpr unsigned int kind = ParamsBase::S_kindDataHistory;
    const auto tell = [&](History&& a_part) {
        if (!a_part.IsEmpty())
            SubscriptionBook::Tell(a_served, kind, [&](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.ProcessHistory(a_number, std::move(a_part));
            });
    };
    if (a_served.Wants(kind) && a_served.nextHistory < a_served.endHistory) {
        History rows =
            m_parts.rows.Read(a_served.GetIsin(), a_served.nextHistory,
                              std::min(a_served.endHistory, a_served.nextHistory + CheckedRows::S_atOnce));
        const std::size_t count = rows.GetRecordsCount();
        CheckedRows::CheckOrder(a_served.lastHistory, rows.TimeSeries().front());
        a_served.lastHistory = rows.TimeSeries().back();
        History part = a_served.fold->Add(std::move(rows));
        a_served.nextHistory += count;
        tell(std::move(part));
        return EStepMore;
    }
    if (a_served.fold) {
        tell(a_served.fold->Finish());
        a_served.fold.reset();
        SubscriptionBook::Tell(a_served, kind, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.ProcessHistoryEnd(a_number);
        });
    }
    a_served.historyDone = true;
    const unsigned int lasting = OfferedKinds(*a_served.instrument) & ~ParamsBase::S_kindDataHistory;
    if (!a_served.Wants(lasting)) {
        m_parts.book.End(a_served, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.RequestEnded(a_number);
        });
        return EStepDone;
    }
    a_served.stage = Served::ESynchronize;
    return EStepMore;
}

SubscriptionSteps::EStep SubscriptionSteps::Synchronize(Served& a_served)
{
    std::optional<NDateTime> last;
    if (a_served.instrument->live && a_served.Wants(ParamsBase::S_kindDataSynchro)) {
        // Without a row there is nothing to tie to; the first one makes the synchronization.
        if (a_served.endSynchronized == 0) {
            const std::uint64_t count = m_parts.store->GetRowCount(a_served.GetIsin());
            if (count == 0)
                return EStepWaitsForRows;
            a_served.firstSynchronized = 0;
            a_served.endSynchronized = count;
        }
        Synchronization block = SynchronizationOf(
            m_parts.rows.Read(a_served.GetIsin(), a_served.firstSynchronized, a_served.endSynchronized));
        a_served.endSynchronized = a_served.firstSynchronized + block.GetRecordsCount();
        last = block.TimeSeries().back();
        SubscriptionBook::Tell(a_served, ParamsBase::S_kindDataSynchro,
                               [&](IConsumer& a_consumer, unsigned int a_number) {
                                   a_consumer.ProcessSynchronization(a_number, std::move(block));
                               });
    }
    a_served.SetPosition(a_served.endSynchronized, last);
    a_served.stage = Served::ECatchUp;
    return EStepMore;
}

SubscriptionSteps::EStep SubscriptionSteps::CatchUp(Served& a_served)
{
    const std::string& isin = a_served.GetIsin();
    if (a_served.instrument->live && a_served.Wants(ParamsBase::S_kindDataRecord)) {
        const std::uint64_t first = a_served.GetPosition();
        const std::uint64_t count = m_parts.store->GetRowCount(isin);
        // This many rows would hold up the live thread.
        if (count > first + CheckedRows::S_atOnce) {
            a_served.TellRows(false, m_parts.rows.Read(isin, first, first + CheckedRows::S_atOnce), first);
            return EStepMore;
        }
    }
    a_served.SetLive(true);
    m_parts.live.Mark(isin);
    if (a_served.mustCheckOperations) {
        a_served.stage = Served::EOperations;
        return EStepMore;
    }
    a_served.stage = Served::ELive;
    return EStepDone;
}

// The first row of the window that holds the last of a_count rows.
std::uint64_t SubscriptionSteps::FindWindow(const Served& a_served, std::uint64_t a_count)
{
    if (a_count == 0)
        return 0;
    const std::string& isin = a_served.GetIsin();
    const IntervalAndMultiplicity interval = a_served.interval;
    if (interval.IsSingleTick())
        return a_count - 1;
    const NDateTime last = m_parts.rows.Read(isin, a_count - 1, a_count).TimeSeries().back();
    if (interval.IsTick()) {
        const std::uint64_t firstOfDay = m_parts.store->FindRow(isin, TimeParts::MidnightOf(last));
        return a_count - 1 - (a_count - 1 - firstOfDay) % interval.GetMultiplicity();
    }
    NDateTime begin;
    AggrWindowsFactory::GetAggrWindowClass(
        interval.GetInterval(), static_cast<unsigned short>(interval.GetMultiplicity()), ELastRecordTime)
        ->GetWindowLimits(last, &begin, nullptr);
    return m_parts.store->FindRow(isin, begin);
}

void SubscriptionSteps::EnsureSession(const StoreInstrument& a_instrument)
{
    if (!m_parts.live.HasSession(a_instrument.isin))
        m_parts.live.SetSession(a_instrument.isin, ReadSession(a_instrument));
    m_parts.live.Mark(a_instrument.isin); // that thread goes on with it
}

std::shared_ptr<SessionState> SubscriptionSteps::ReadSession(const StoreInstrument& a_instrument)
{
    const std::string& isin = a_instrument.isin;
    auto session = std::make_shared<SessionState>(a_instrument);
    const std::uint64_t count = m_parts.store->GetRowCount(isin);
    if (count > 0) {
        const NDateTime last = m_parts.rows.Read(isin, count - 1, count).TimeSeries().back();
        const std::uint64_t first = m_parts.store->FindRow(isin, TimeParts::MidnightOf(last));
        std::optional<double> reference;
        if (first > 0) {
            const History before = m_parts.rows.Read(isin, first - 1, first);
            if (const auto prices = before.find(Price); prices != before.end() && !prices->second.empty())
                reference = prices->second.back();
        }
        session->BeginAt(first, reference);
        while (session->GetNextRow() < count)
            session->Add(m_parts.rows.Read(isin, session->GetNextRow(),
                                           std::min(count, session->GetNextRow() + CheckedRows::S_atOnce)),
                         0);
    }
    session->SetOffers(m_parts.store->ReadOffers(isin));
    return session;
}

} // namespace kalvento::internal
