#include "file_provider/FileStore.h"

#include "file_provider/Catalog.h"
#include "file_provider/CatalogMaker.h"
#include "file_provider/MarketClock.h"
#include "file_provider/StoreLog.h"
#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/FileTools.h"
#include "platform/WidePath.h"
#include "text_rows/TimeText.h"
#include "time/TimeParts.h"
#include "velo/LogAllExceptions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace kalvento::files;
using SteadyClock = MarketClock::SteadyClock;

constexpr std::chrono::seconds S_watchEvery(2);
constexpr std::size_t S_mostOperationsBytes = std::size_t{1} << 20U;

// A book has fewer levels at times: a price of 0 says that nothing is offered there.
void HideEmptyLevels(Offers& a_offers)
{
    for (const auto& side :
         {std::array{Bid1, BidVolume1, BidOrders1}, std::array{Ask1, AskVolume1, AskOrders1}})
        for (unsigned int level = 0; level < 5; ++level) {
            const auto price = a_offers.find(static_cast<ESeriesId>(side.front() + level));
            if (!price->second.IsSet() || price->second.value != 0.0)
                continue;
            for (const ESeriesId first : side)
                a_offers.ResetDataSeries(static_cast<ESeriesId>(first + level));
        }
}

} // namespace

struct FileStore::Impl {
    explicit Impl(FileStoreOptions a_options) : options(std::move(a_options)) {}

    SteadyClock::time_point Now() const { return host.now ? host.now() : SteadyClock::now(); }

    // On the thread.
    void Work(const std::stop_token& a_stop);
    bool Refresh(const std::stop_token& a_stop);
    void StartClock(const Catalog& a_catalog);
    void Publish(std::shared_ptr<Catalog> a_catalog);
    std::vector<std::string> MoveTo(std::int64_t a_second);
    std::vector<std::string> MoveLocked(std::int64_t a_second); // mutex held
    std::optional<std::int64_t> NextSecond() const;
    void Play(const std::stop_token& a_stop);
    void Wait(const std::stop_token& a_stop);

    // Any thread.
    const Catalog& TheCatalog() const; // mutex held
    std::optional<Catalog::Place> FindPlace(const std::string& a_isin);
    template<class Action>
    auto WithPlace(const std::string& a_isin, Action a_action, decltype(a_action(Catalog::Place())) a_none);

    const FileStoreOptions options;
    FileStoreHost host;
    CatalogMaker maker{options, host};        // the thread's
    IMarketStoreListener* listener = nullptr; // the thread's, set before it starts
    std::optional<bool> connected;            // the thread's: what was told last; empty: nothing since Open
    SteadyClock::time_point watched;          // the thread's: when the folder was looked at

    std::mutex mutex; // guards what follows
    std::condition_variable_any wake;
    bool clockMoved = false;
    std::shared_ptr<Catalog> catalog; // null until the files have been read
    std::optional<MarketClock> clock; // from the first day on that is played
    std::int64_t position = 0;        // second up to which rows can be seen

    std::jthread thread; // last: the others outlive it
};

void FileStore::Impl::Work(const std::stop_token& a_stop)
{
    while (!a_stop.stop_requested()) {
        try {
            if (Refresh(a_stop))
                Play(a_stop);
        } catch (...) {
            if (!a_stop.stop_requested())
                LogAllExceptions("FileStore::Work", __LINE__);
        }
        if (!a_stop.stop_requested())
            Wait(a_stop);
    }
}

// Looks at the folder when it is time, and announces what has changed. False where there is nothing to play.
bool FileStore::Impl::Refresh(const std::stop_token& a_stop)
{
    if (connected && Now() - watched < S_watchEvery)
        return *connected;
    watched = Now();
    const std::shared_ptr<Catalog> before = catalog;
    FolderContents folder = ScanFolder(options.folder, before ? &before->folder : nullptr);
    if (!folder.exists && !options.folder.empty()) {
        if (connected.value_or(true))
            listener->Broken(L"Nie ma folderu " + WidePath::ToWide(options.folder) +
                             L" albo nie można go odczytać.");
        connected = false;
        return false;
    }
    const bool changed = !before || before->folder != folder;
    if (changed) {
        auto made = maker.Make(std::move(folder), before ? *before : Catalog(), a_stop);
        if (connected.value_or(false) && !made->keepsRows) {
            listener->Broken(L"Zmieniły się pliki z notowaniami.");
            connected = false;
        }
        listener->LeftOut(made->faults);
        Publish(std::move(made));
    }
    if (!connected.value_or(false)) {
        MoveTo(clock ? clock->SecondAt(Now()) : position);
        connected = true;
        listener->Restored();
    }
    if (changed && before)
        listener->InstrumentsChanged();
    return true;
}

// The clock is one for the life of the store; only another day sets it anew.
void FileStore::Impl::StartClock(const Catalog& a_catalog)
{
    if (!a_catalog.day || (clock && clock->day == *a_catalog.day))
        return;
    MarketClock made;
    made.day = *a_catalog.day;
    made.begin = a_catalog.seconds.empty() ? made.day * TimeParts::S_secondsOfDay : a_catalog.seconds.front();
    const auto start = kalvento::rows::ParseClockText(options.start);
    if (start)
        made.begin = made.day * TimeParts::S_secondsOfDay + start->seconds;
    else if (!options.start.empty())
        WriteLog(__LINE__,
                 "Opcja Start: \"" + options.start + "\" nie jest porą dnia, oczekiwano na przykład 09:00");
    made.speed = std::isfinite(options.speed) ? options.speed : 0.0;
    made.started = Now();
    clock = made;
    position = made.SecondAt(made.started);
}

// Rows that aren't due must not show even for a moment: the new list arrives together with all of its counts.
void FileStore::Impl::Publish(std::shared_ptr<Catalog> a_catalog)
{
    std::vector<std::string> grown;
    {
        const std::lock_guard lock(mutex);
        StartClock(*a_catalog);
        for (auto& [isin, instrument] : a_catalog->instruments) {
            const auto before = catalog ? catalog->instruments.find(isin) : a_catalog->instruments.end();
            if (!instrument.info.live || !catalog || before == catalog->instruments.end())
                continue;
            instrument.place.visible = before->second.place.visible;
            instrument.place.visibleBook = before->second.place.visibleBook;
        }
        catalog = std::move(a_catalog);
        grown = MoveLocked(position);
    }
    // Before the first Restored nothing is announced: that one will speak for all rows.
    for (const std::string& isin : grown) {
        if (connected.value_or(false))
            listener->RowsAdded(isin);
    }
    for (const auto& [path, cache] : catalog->caches)
        if (!options.listOnly)
            cache->RemoveOldParts();
}

std::vector<std::string> FileStore::Impl::MoveTo(std::int64_t a_second)
{
    const std::lock_guard lock(mutex);
    return MoveLocked(a_second);
}

// Shows what is due up to that second; returns the instruments whose rows or book it was.
std::vector<std::string> FileStore::Impl::MoveLocked(std::int64_t a_second)
{
    std::vector<std::string> grown;
    position = a_second;
    for (auto& [isin, instrument] : catalog->instruments) {
        if (!instrument.info.live)
            continue;
        Catalog::Place& place = instrument.place;
        const std::uint64_t rows = std::exchange(place.visible, instrument.day.RowsAt(a_second));
        const std::uint64_t book = std::exchange(place.visibleBook, instrument.bookDay.RowsAt(a_second));
        if (rows != place.visible || book != place.visibleBook)
            grown.push_back(isin);
    }
    return grown;
}

std::optional<std::int64_t> FileStore::Impl::NextSecond() const
{
    const auto next = std::ranges::upper_bound(catalog->seconds, position);
    return next == catalog->seconds.end() ? std::nullopt : std::optional(*next);
}

// Second by second, even when the thread is late: what is announced doesn't depend on how busy the machine is.
void FileStore::Impl::Play(const std::stop_token& a_stop)
{
    while (!a_stop.stop_requested() && clock) {
        const std::int64_t due = clock->SecondAt(Now());
        const auto next = NextSecond();
        if (!next || *next > due)
            return;
        for (const std::string& isin : MoveTo(*next))
            listener->RowsAdded(isin);
    }
}

void FileStore::Impl::Wait(const std::stop_token& a_stop)
{
    std::unique_lock lock(mutex);
    const auto moved = [this] { return clockMoved; };
    if (host.now) {
        wake.wait(lock, a_stop, moved);
    } else {
        SteadyClock::time_point until = Now() + S_watchEvery;
        if (connected.value_or(false) && clock && clock->speed > 0.0) {
            if (const auto next = NextSecond())
                until = std::min(until, clock->DueOf(*next));
        }
        wake.wait_until(lock, a_stop, until, moved);
    }
    clockMoved = false;
}

const Catalog& FileStore::Impl::TheCatalog() const
{
    if (!catalog)
        throw std::runtime_error("Pliki nie są jeszcze wczytane"_cp1250);
    return *catalog;
}

std::optional<Catalog::Place> FileStore::Impl::FindPlace(const std::string& a_isin)
{
    const std::lock_guard lock(mutex);
    const auto& instruments = TheCatalog().instruments;
    const auto found = instruments.find(a_isin);
    return found == instruments.end() ? std::nullopt : std::optional(found->second.place);
}

// While files change, parts may vanish from the disk before a reader gets to them: then it looks again.
template<class Action>
auto FileStore::Impl::WithPlace(const std::string& a_isin, Action a_action,
                                decltype(a_action(Catalog::Place())) a_none)
{
    for (;;) {
        const auto place = FindPlace(a_isin);
        if (!place)
            return a_none;
        try {
            return a_action(*place);
        } catch (const std::exception&) {
            const auto now = FindPlace(a_isin);
            if (now && now->cache == place->cache)
                throw;
        }
    }
}

FileStore::FileStore(FileStoreOptions a_options) : m_impl(std::make_unique<Impl>(std::move(a_options))) {}

FileStore::~FileStore()
{
    FileStore::Close();
}

void FileStore::SetHost(FileStoreHost a_host)
{
    m_impl->host = std::move(a_host);
}

void FileStore::Open(IMarketStoreListener& a_listener)
{
    m_impl->listener = &a_listener;
    m_impl->connected.reset();
    m_impl->thread = std::jthread([this](const std::stop_token& a_stop) { m_impl->Work(a_stop); });
}

void FileStore::Close()
{
    // The request to stop wakes the waits that know the token of the thread.
    m_impl->thread = std::jthread();
}

std::vector<StoreInstrument> FileStore::ReadInstruments()
{
    const std::lock_guard lock(m_impl->mutex);
    std::vector<StoreInstrument> instruments;
    for (const auto& [isin, instrument] : m_impl->TheCatalog().instruments)
        instruments.push_back(instrument.info);
    return instruments;
}

HistoryOperations FileStore::ReadOperations(const std::string& a_isin)
{
    const auto place = m_impl->FindPlace(a_isin);
    HistoryOperations operations;
    if (!place || !place->operations)
        return operations;
    const std::string name = CodePage::WideToCp1250(WidePath::ToWide(*place->operations));
    std::error_code error;
    const auto text = FileTools::ReadFile(*place->operations, S_mostOperationsBytes, error);
    if (!text)
        throw std::runtime_error(name + ": " + kalvento::internal::ErrorText(error));
    // An empty list would replace the one that is kept.
    if (!operations.Parse(*text))
        throw std::runtime_error(name + ": " + "nie można odczytać listy operacji"_cp1250);
    return operations;
}

std::uint64_t FileStore::GetRowCount(const std::string& a_isin)
{
    const auto place = m_impl->FindPlace(a_isin);
    return place ? place->visible : 0;
}

std::uint64_t FileStore::FindRow(const std::string& a_isin, const NDateTime& a_time)
{
    return m_impl->WithPlace(
        a_isin,
        [&](const Catalog::Place& a_place) {
            return std::min(a_place.cache->FindRow(a_place.symbol, a_time), a_place.visible);
        },
        0);
}

History FileStore::ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last)
{
    return m_impl->WithPlace(
        a_isin,
        [&](const Catalog::Place& a_place) {
            return a_place.cache->ReadRows(a_place.symbol, a_first, std::min(a_last, a_place.visible));
        },
        History(EIntervalTick, 1));
}

std::optional<Offers> FileStore::ReadOffers(const std::string& a_isin)
{
    const auto place = m_impl->FindPlace(a_isin);
    if (!place || !place->book)
        return std::nullopt;
    Offers offers;
    if (place->visibleBook == 0)
        return offers;
    const ESeriesId priceMeans = place->book->GetContents()->priceMeans;
    const History rows = place->book->ReadRows(0, place->visibleBook - 1, place->visibleBook);
    for (const auto& [series, values] : rows)
        offers.SetData(series == Price ? priceMeans : series, values.front());
    HideEmptyLevels(offers);
    offers.SetTime(rows.TimeSeries().front());
    return offers;
}

void FileStore::ClockMoved()
{
    {
        const std::lock_guard lock(m_impl->mutex);
        m_impl->clockMoved = true;
    }
    m_impl->wake.notify_all();
}

std::uint64_t FileStore::GetTextsRead() const
{
    return m_impl->maker.GetTextsRead();
}

std::optional<SteadyClock::duration> FileStore::GetTimeToNextRow(const std::string& a_isin)
{
    const std::lock_guard lock(m_impl->mutex);
    const auto& instruments = m_impl->TheCatalog().instruments;
    const auto found = instruments.find(a_isin);
    if (found == instruments.end() || !m_impl->clock || m_impl->clock->speed <= 0.0)
        return std::nullopt;
    const SteadyClock::time_point now = m_impl->Now();
    const auto next = found->second.day.NextAfter(std::max(m_impl->position, m_impl->clock->SecondAt(now)));
    return next ? std::optional(m_impl->clock->DueOf(*next) - now) : std::nullopt;
}
