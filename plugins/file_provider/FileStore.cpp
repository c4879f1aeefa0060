#include "file_provider/FileStore.h"

#include "file_provider/RowCache.h"
#include "file_provider/SourceFolder.h"
#include "platform/CodePage.h"
#include "platform/FileTools.h"
#include "platform/WidePath.h"
#include "series/Series.h"
#include "text_rows/RowSeries.h"
#include "text_rows/TimeText.h"
#include "velo/Log.h"
#include "velo/LogAllExceptions.h"

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <limits>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>
#include <stop_token>
#include <string_view>
#include <thread>
#include <utility>

namespace {

using namespace kalvento::files;
using SteadyClock = std::chrono::steady_clock;

constexpr std::int64_t S_daySeconds = 86400;
constexpr std::int64_t S_oleDayZero = -25569; // 1899-12-30, counted from 1970-01-01
constexpr std::chrono::seconds S_watchEvery(2);
constexpr std::size_t S_mostOperationsBytes = std::size_t{1} << 20U;
constexpr std::uint64_t S_stepChunk = 65536;
constexpr const wchar_t* S_all = L"Wszystkie";

/// Whole seconds since 1970-01-01 on the clock that the time shows.
std::int64_t SecondOf(const NDateTime& a_time)
{
    return (a_time.GetAbsoluteDay() + S_oleDayZero) * S_daySeconds + a_time.GetAbsoluteTime();
}

std::int64_t DayOf(const NDateTime& a_time)
{
    return a_time.GetAbsoluteDay() + S_oleDayZero;
}

NDateTime DateOfDay(std::int64_t a_day)
{
    return NDateTime::FromDouble(static_cast<double>(a_day - S_oleDayZero));
}

NDateTime DateOf(const NDateTime& a_time)
{
    return {a_time.GetYear(), a_time.GetMonth(), a_time.GetDay()};
}

void Log(int a_line, const std::string& a_utf8)
{
    VeloTools::Log::Instance().Write("FileStore", a_line,
                                     CodePage::WideToCp1250(CodePage::Utf8ToWide(a_utf8)));
}

/// Rows of one instrument (or of its book) on the day that is played: up to which row they are there after each second.
class DayRows {
public:
    DayRows() = default;
    DayRows(RowCache& a_cache, std::size_t a_symbol, std::int64_t a_day)
    {
        m_before = a_cache.FindRow(a_symbol, DateOfDay(a_day));
        const std::uint64_t end = a_cache.FindRow(a_symbol, DateOfDay(a_day + 1));
        for (std::uint64_t row = m_before; row < end; row += S_stepChunk) {
            const History rows = a_cache.ReadRows(a_symbol, row, std::min(row + S_stepChunk, end));
            std::uint64_t number = row;
            for (const NDateTime& time : rows.TimeSeries()) {
                const std::int64_t second = SecondOf(time);
                if (m_steps.empty() || m_steps.back().second != second)
                    m_steps.push_back({second, 0});
                m_steps.back().rowsThen = ++number;
            }
        }
    }
    /// The first second after that one at which there are more; empty where there is none.
    std::optional<std::int64_t> NextAfter(std::int64_t a_second) const
    {
        const auto later = Later(a_second);
        return later == m_steps.end() ? std::nullopt : std::optional(later->second);
    }
    std::uint64_t RowsAt(std::int64_t a_second) const
    {
        const auto later = Later(a_second);
        return later == m_steps.begin() ? m_before : std::prev(later)->rowsThen;
    }
    void AddSeconds(std::set<std::int64_t>& a_seconds) const
    {
        for (const Step& step : m_steps)
            a_seconds.insert(step.second);
    }

private:
    struct Step {
        std::int64_t second;
        std::uint64_t rowsThen;
    };
    std::vector<Step>::const_iterator Later(std::int64_t a_second) const
    {
        return std::upper_bound(
            m_steps.begin(), m_steps.end(), a_second,
            [](std::int64_t a_value, const Step& a_step) { return a_value < a_step.second; });
    }

    std::uint64_t m_before = 0;
    std::vector<Step> m_steps;
};

/// One instrument with where its rows are.
struct Instrument {
    StoreInstrument info;
    std::shared_ptr<RowCache> cache;
    std::size_t symbol = 0;
    std::shared_ptr<RowCache> book; // null: none
    std::optional<std::filesystem::path> operations;
    DayRows day;     // of a live one
    DayRows bookDay; // of a book
    std::uint64_t visible = 0;
    std::uint64_t visibleBook = 0;
};

/// Where the rows of an instrument are that can be seen now.
struct Place {
    std::shared_ptr<RowCache> cache;
    std::size_t symbol = 0;
    std::uint64_t visible = 0;
};

/// All that is served, made anew when files change.
struct Catalog {
    FolderContents folder;
    std::map<std::filesystem::path, std::shared_ptr<RowCache>> caches; // those that could be read
    std::map<std::string, Instrument> instruments;
    std::optional<std::int64_t> day;
    std::vector<std::int64_t> seconds; // of the day, at which there is something new
    bool keepsRows = true;             // what was seen before is as it was, but for rows that came behind
};

/// Which moment of the recorded day it is.
struct MarketClock {
    std::int64_t day = 0;
    std::int64_t begin = 0; // second at which it started
    SteadyClock::time_point started;
    double speed = 0.0;

    std::int64_t SecondAt(SteadyClock::time_point a_now) const
    {
        const std::int64_t last = (day + 1) * S_daySeconds - 1;
        if (speed <= 0.0)
            return last;
        const double gone = std::chrono::duration<double>(a_now - started).count() * speed;
        return gone >= static_cast<double>(last - begin) ? last : begin + static_cast<std::int64_t>(gone);
    }
    SteadyClock::time_point DueOf(std::int64_t a_second) const
    {
        const double wait = static_cast<double>(a_second - begin) / speed;
        constexpr double longest = 1e9; // seconds; more would overflow the clock
        // Rounded up, so that the clock shows that second when the moment has come.
        return started +
               std::chrono::duration_cast<SteadyClock::duration>(
                   std::chrono::duration<double>(std::min(wait, longest))) +
               std::chrono::microseconds(1);
    }
};

std::set<DSProp> SeriesOf(const CacheContents& a_contents, unsigned int a_decimals)
{
    std::set<DSProp> series;
    for (const ESeriesId id : a_contents.series) {
        if (id >= VirtualSeries) {
            series.insert(DSProp(id, VeloTools::Series::DefaultAggregationType(id),
                                 L"Seria " + std::to_wstring(static_cast<unsigned int>(id)), EPrecision2));
            continue;
        }
        series.insert(DSProp(id));
    }
    kalvento::rows::SetDecimals(series, a_decimals);
    return series;
}

} // namespace

struct FileStore::Impl {
    explicit Impl(FileStoreOptions a_options) : options(std::move(a_options)) {}

    SteadyClock::time_point Now() const { return host.now ? host.now() : SteadyClock::now(); }

    // On the thread.
    void Work(const std::stop_token& a_stop);
    bool Refresh(const std::stop_token& a_stop);
    std::shared_ptr<Catalog> MakeCatalog(FolderContents a_folder, const Catalog* a_before,
                                         const std::stop_token& a_stop);
    void ReadSources(Catalog& a_catalog, const Catalog* a_before, const std::stop_token& a_stop);
    void AddInstruments(Catalog& a_catalog);
    void ChooseDay(Catalog& a_catalog) const;
    static void PrepareDay(Catalog& a_catalog);
    void NumberGenerations(Catalog& a_catalog, const Catalog* a_before);
    static void PrepareDay(Instrument& a_instrument, std::int64_t a_day, std::set<std::int64_t>& a_seconds);
    void StartClock(const Catalog& a_catalog);
    void Publish(std::shared_ptr<Catalog> a_catalog);
    std::vector<std::string> MoveTo(std::int64_t a_second);
    std::vector<std::string> MoveLocked(std::int64_t a_second); // mutex held
    void Play(const std::stop_token& a_stop);
    void Wait(const std::stop_token& a_stop);

    // Any thread.
    std::optional<Place> FindPlace(const std::string& a_isin);
    template<class Action>
    auto WithPlace(const std::string& a_isin, Action a_action, decltype(a_action(Place())) a_none);
    const Catalog& TheCatalog() const;

    const FileStoreOptions options;
    FileStoreHost host;
    std::shared_ptr<CacheHost> cacheHost = std::make_shared<CacheHost>();
    IMarketStoreListener* listener = nullptr; // the thread's, set before it starts
    unsigned int announced = 0;               // the thread's: files to be read, in all
    std::uint64_t generations = 0;            // the thread's: given out so far
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

const Catalog& FileStore::Impl::TheCatalog() const
{
    if (!catalog)
        throw std::runtime_error("Pliki nie są jeszcze wczytane"_cp1250);
    return *catalog;
}

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

// Looks at the folder when it is time, and tells what that changed. False: there is nothing to play.
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
    const bool changed = !before || before->folder.Differs(folder);
    if (changed) {
        for (const std::filesystem::path& path : folder.unreadable)
            Log(__LINE__, path.string() + ": nie można odczytać; podawane jest to, co wczytano wcześniej");
        auto made = MakeCatalog(std::move(folder), before.get(), a_stop);
        if (connected.value_or(false) && !made->keepsRows) {
            listener->Broken(L"Zmieniły się pliki z notowaniami.");
            connected = false;
        }
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

std::shared_ptr<Catalog> FileStore::Impl::MakeCatalog(FolderContents a_folder, const Catalog* a_before,
                                                      const std::stop_token& a_stop)
{
    auto made = std::make_shared<Catalog>();
    made->folder = std::move(a_folder);
    ReadSources(*made, a_before, a_stop);
    AddInstruments(*made);
    ChooseDay(*made);
    PrepareDay(*made);
    NumberGenerations(*made, a_before);
    return made;
}

// An instrument keeps its generation as long as no row that was seen is another now.
void FileStore::Impl::NumberGenerations(Catalog& a_catalog, const Catalog* a_before)
{
    const auto goesOn = [&](const Instrument& a_old, const Instrument& a_new) {
        const RowCache& oldCache = *a_old.cache;
        const RowCache& newCache = *a_new.cache;
        const auto oldContents = oldCache.GetContents();
        const auto newContents = newCache.GetContents();
        // An earlier day would take rows back that were seen.
        if (a_new.info.live && a_before->day && (!a_catalog.day || *a_catalog.day < *a_before->day))
            return false;
        return oldCache.GetSource().path == newCache.GetSource().path &&
               oldContents->symbols[a_old.symbol].symbol == newContents->symbols[a_new.symbol].symbol &&
               (oldContents->fingerprint == newContents->fingerprint ||
                oldContents->fingerprint == newContents->extendedFingerprint);
    };
    std::size_t known = 0;
    for (auto& [isin, instrument] : a_catalog.instruments) {
        const auto before =
            a_before != nullptr ? a_before->instruments.find(isin) : a_catalog.instruments.end();
        if (a_before != nullptr && before != a_before->instruments.end() &&
            goesOn(before->second, instrument)) {
            instrument.info.generation = before->second.info.generation;
            ++known;
        } else {
            instrument.info.generation = ++generations;
        }
    }
    a_catalog.keepsRows = a_before == nullptr || known == a_before->instruments.size();
}

void FileStore::Impl::ReadSources(Catalog& a_catalog, const Catalog* a_before, const std::stop_token& a_stop)
{
    std::vector<std::shared_ptr<RowCache>> toRead;
    for (const SourceFile& source : a_catalog.folder.sources) {
        if (a_before != nullptr) {
            const auto known = a_before->caches.find(source.path);
            if (known != a_before->caches.end() && known->second->GetSource().stamp == source.stamp &&
                known->second->GetSource().name == source.name) {
                a_catalog.caches.insert(*known);
                continue;
            }
        }
        auto cache = std::make_shared<RowCache>(source, cacheHost);
        if (cache->Load())
            a_catalog.caches.emplace(source.path, std::move(cache));
        else
            toRead.push_back(std::move(cache));
    }
    if (!toRead.empty() && host.addToDo)
        host.addToDo(static_cast<unsigned int>(toRead.size()));
    for (const auto& cache : toRead) {
        const std::filesystem::path& path = cache->GetSource().path;
        try {
            cache->Build(a_stop);
            a_catalog.caches.emplace(path, cache);
        } catch (const std::exception& failure) {
            if (a_stop.stop_requested())
                throw;
            // Somebody may be writing it just now: what was read before is served on.
            const auto before = a_before != nullptr ? a_before->caches.find(path) : a_catalog.caches.end();
            const bool isKept = a_before != nullptr && before != a_before->caches.end() &&
                                before->second->GetSource().name == cache->GetSource().name;
            if (isKept)
                a_catalog.caches.insert(*before);
            // The text says file, line and what would be accepted.
            Log(__LINE__,
                (isKept ? "Zmiany w pliku pominięto: " : "Plik pominięto: ") + std::string(failure.what()));
        }
        if (host.setDone)
            host.setDone(++announced);
    }
}

void FileStore::Impl::AddInstruments(Catalog& a_catalog)
{
    const auto bookOf = [&a_catalog](const SourceFile& a_source) -> std::shared_ptr<RowCache> {
        for (const auto& [path, cache] : a_catalog.caches) {
            if (cache->GetSource().isBook && path.parent_path() == a_source.path.parent_path() &&
                path.stem().stem() == a_source.path.stem())
                return cache;
        }
        return nullptr;
    };
    for (const auto& [path, cache] : a_catalog.caches) {
        const SourceFile& source = cache->GetSource();
        if (source.isBook)
            continue;
        const auto contents = cache->GetContents();
        for (std::size_t place = 0; place < contents->symbols.size(); ++place) {
            const CachedSymbol& symbol = contents->symbols[place];
            const std::string called = symbol.symbol.empty() ? source.path.stem().string() : symbol.symbol;
            const std::string name = symbol.symbol.empty() ? source.name : SafeName(called);
            Instrument instrument;
            instrument.cache = cache;
            instrument.symbol = place;
            instrument.operations = FindOperations(a_catalog.folder, source, called);
            StoreInstrument& info = instrument.info;
            info.isin = a_catalog.instruments.contains(name) ? source.name + "." + name : name;
            info.shortName = info.isin;
            info.longName = CodePage::WideToCp1250(CodePage::Utf8ToWide(called));
            info.market = source.market;
            info.groups = {S_all};
            if (!source.group.empty())
                info.groups.push_back(source.group);
            info.series = SeriesOf(*contents, symbol.decimals);
            info.interval = contents->interval;
            info.live = contents->interval.IsSingleTick() && symbol.hasTimesOfDay;
            info.firstDay = NDateTime(1970, 1, 2);
            info.lastDay = NDateTime(1970, 1, 1);
            if (symbol.rows > 0) {
                info.firstDay = DateOf(symbol.parts.front().first);
                info.lastDay = DateOf(symbol.parts.back().last);
            }
            if (info.live)
                instrument.book = bookOf(source);
            if (!a_catalog.instruments.emplace(info.isin, std::move(instrument)).second)
                Log(__LINE__,
                    path.string() + ": pominięto instrument " + name + ", bo jego nazwa się powtarza");
        }
    }
}

void FileStore::Impl::ChooseDay(Catalog& a_catalog) const
{
    a_catalog.day = kalvento::rows::ParseDateText(options.day);
    if (!a_catalog.day && !options.day.empty())
        Log(__LINE__, "Opcja Day: \"" + options.day +
                          "\" nie jest datą, oczekiwano na przykład 2024-08-08; "
                          "odtwarzany jest ostatni dzień");
    if (a_catalog.day)
        return;
    for (const auto& [isin, instrument] : a_catalog.instruments) {
        if (instrument.info.live)
            a_catalog.day = std::max(a_catalog.day.value_or(std::numeric_limits<std::int64_t>::min()),
                                     DayOf(instrument.info.lastDay));
    }
}

void FileStore::Impl::PrepareDay(Catalog& a_catalog)
{
    std::set<std::int64_t> seconds;
    for (auto place = a_catalog.instruments.begin(); place != a_catalog.instruments.end();) {
        Instrument& instrument = place->second;
        instrument.visible = instrument.cache->GetContents()->symbols[instrument.symbol].rows;
        try {
            if (instrument.info.live && a_catalog.day)
                PrepareDay(instrument, *a_catalog.day, seconds);
            ++place;
        } catch (const std::exception& failure) {
            Log(__LINE__, "Instrument pominięto: " + CodePage::Cp1250ToUtf8(failure.what()));
            place = a_catalog.instruments.erase(place);
        }
    }
    a_catalog.seconds.assign(seconds.begin(), seconds.end());
}

void FileStore::Impl::PrepareDay(Instrument& a_instrument, std::int64_t a_day,
                                 std::set<std::int64_t>& a_seconds)
{
    a_instrument.day = DayRows(*a_instrument.cache, a_instrument.symbol, a_day);
    if (a_instrument.book)
        a_instrument.bookDay = DayRows(*a_instrument.book, 0, a_day);
    // Later days never come: they aren't among those on which there are rows.
    const std::uint64_t rows = a_instrument.day.RowsAt((a_day + 1) * S_daySeconds);
    if (rows == 0) {
        a_instrument.info.firstDay = NDateTime(1970, 1, 2);
        a_instrument.info.lastDay = NDateTime(1970, 1, 1);
    } else {
        a_instrument.info.lastDay =
            DateOf(a_instrument.cache->ReadRows(a_instrument.symbol, rows - 1, rows).TimeSeries().front());
    }
    a_instrument.day.AddSeconds(a_seconds);
    a_instrument.bookDay.AddSeconds(a_seconds);
}

// The clock is one for the life of the store; only another day sets it anew.
void FileStore::Impl::StartClock(const Catalog& a_catalog)
{
    if (!a_catalog.day || (clock && clock->day == *a_catalog.day))
        return;
    MarketClock made;
    made.day = *a_catalog.day;
    made.begin = a_catalog.seconds.empty() ? made.day * S_daySeconds : a_catalog.seconds.front();
    const auto start = kalvento::rows::ParseClockText(options.start);
    if (start)
        made.begin = made.day * S_daySeconds + start->seconds;
    else if (!options.start.empty())
        Log(__LINE__,
            "Opcja Start: \"" + options.start + "\" nie jest porą dnia, oczekiwano na przykład 09:00");
    made.speed = std::isfinite(options.speed) ? options.speed : 0.0;
    made.started = Now();
    clock = made;
    position = made.SecondAt(made.started);
}

// Rows that aren't due yet may not show for a moment: the new list comes with all of its counts in one go.
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
            instrument.visible = before->second.visible;
            instrument.visibleBook = before->second.visibleBook;
        }
        catalog = std::move(a_catalog);
        grown = MoveLocked(position);
    }
    // Told where something is told at all: the first time Restored says it for all.
    for (const std::string& isin : grown) {
        if (connected.value_or(false))
            listener->RowsAdded(isin);
    }
    for (const auto& [path, cache] : catalog->caches)
        cache->RemoveOldParts();
}

std::vector<std::string> FileStore::Impl::MoveTo(std::int64_t a_second)
{
    const std::lock_guard lock(mutex);
    return MoveLocked(a_second);
}

// Lets be seen what is due up to that second; returns whose rows or book those were.
std::vector<std::string> FileStore::Impl::MoveLocked(std::int64_t a_second)
{
    std::vector<std::string> grown;
    position = a_second;
    for (auto& [isin, instrument] : catalog->instruments) {
        if (!instrument.info.live)
            continue;
        const std::uint64_t rows = std::exchange(instrument.visible, instrument.day.RowsAt(a_second));
        const std::uint64_t book = std::exchange(instrument.visibleBook, instrument.bookDay.RowsAt(a_second));
        if (rows != instrument.visible || book != instrument.visibleBook)
            grown.push_back(isin);
    }
    return grown;
}

// Second by second, also when the thread comes late: what is told when doesn't depend on how busy the machine is.
void FileStore::Impl::Play(const std::stop_token& a_stop)
{
    while (!a_stop.stop_requested() && clock) {
        const std::int64_t due = clock->SecondAt(Now());
        const auto next = std::upper_bound(catalog->seconds.begin(), catalog->seconds.end(), position);
        if (next == catalog->seconds.end() || *next > due)
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
            const auto next = std::upper_bound(catalog->seconds.begin(), catalog->seconds.end(), position);
            if (next != catalog->seconds.end())
                until = std::min(until, clock->DueOf(*next));
        }
        wake.wait_until(lock, a_stop, until, moved);
    }
    clockMoved = false;
}

std::optional<Place> FileStore::Impl::FindPlace(const std::string& a_isin)
{
    const std::lock_guard lock(mutex);
    const auto& instruments = TheCatalog().instruments;
    const auto found = instruments.find(a_isin);
    if (found == instruments.end())
        return std::nullopt;
    return Place{found->second.cache, found->second.symbol, found->second.visible};
}

// While files are changing, what a reader holds may go from the disk under its hands: then it looks again.
template<class Action>
auto FileStore::Impl::WithPlace(const std::string& a_isin, Action a_action,
                                decltype(a_action(Place())) a_none)
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
    m_impl->cacheHost->folderOf = a_host.folderOf;
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
    // Asked for the end, a jthread wakes the waits that know its token.
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
    std::optional<std::filesystem::path> path;
    {
        const std::lock_guard lock(m_impl->mutex);
        const auto& instruments = m_impl->TheCatalog().instruments;
        const auto found = instruments.find(a_isin);
        if (found != instruments.end())
            path = found->second.operations;
    }
    HistoryOperations operations;
    if (!path)
        return operations;
    std::error_code error;
    const auto text = FileTools::ReadFile(*path, S_mostOperationsBytes, error);
    if (!text)
        throw std::runtime_error(path->string() + ": " + error.message());
    // An empty list would take the place of the one that is kept.
    if (!operations.Parse(*text))
        throw std::runtime_error(path->string() + ": " + "nie można odczytać listy operacji"_cp1250);
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
        [&](const Place& a_place) {
            return std::min(a_place.cache->FindRow(a_place.symbol, a_time), a_place.visible);
        },
        0);
}

History FileStore::ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last)
{
    return m_impl->WithPlace(
        a_isin,
        [&](const Place& a_place) {
            return a_place.cache->ReadRows(a_place.symbol, a_first, std::min(a_last, a_place.visible));
        },
        History(EIntervalTick, 1));
}

std::optional<Offers> FileStore::ReadOffers(const std::string& a_isin)
{
    std::shared_ptr<RowCache> book;
    std::uint64_t row = 0;
    {
        const std::lock_guard lock(m_impl->mutex);
        const auto& instruments = m_impl->TheCatalog().instruments;
        const auto found = instruments.find(a_isin);
        if (found == instruments.end() || !found->second.book)
            return std::nullopt;
        book = found->second.book;
        row = found->second.visibleBook;
    }
    Offers offers;
    if (row == 0)
        return offers;
    const ESeriesId priceMeans = book->GetContents()->priceMeans;
    const History rows = book->ReadRows(0, row - 1, row);
    for (const auto& [series, values] : rows)
        offers.SetData(series == Price ? priceMeans : series, values.front());
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
    return m_impl->cacheHost->textsRead;
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
