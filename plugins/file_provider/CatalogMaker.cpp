#include "file_provider/CatalogMaker.h"

#include "platform/CodePage.h"
#include "platform/ShownText.h"
#include "platform/WidePath.h"
#include "series/Series.h"
#include "text_rows/RowSeries.h"
#include "text_rows/RowsFault.h"
#include "text_rows/TimeText.h"
#include "time/DateTimeTools.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <exception>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kalvento::files {

namespace {

constexpr const wchar_t* S_all = L"Wszystkie";

std::set<DSProp> SeriesOf(const CacheContents& a_contents, unsigned int a_decimals)
{
    std::set<DSProp> series;
    for (const ESeriesId id : a_contents.series) {
        if (id >= VirtualSeries)
            series.emplace(id, VeloTools::Series::DefaultAggregationType(id),
                           L"Seria " + std::to_wstring(static_cast<unsigned int>(id)), EPrecision2);
        else
            series.emplace(id);
    }
    kalvento::rows::SetDecimals(series, a_decimals);
    return series;
}

// A last day before the first means that there are no rows.
void SetNoDays(StoreInstrument& a_info)
{
    a_info.firstDay = NDateTime(1970, 1, 2);
    a_info.lastDay = NDateTime(1970, 1, 1);
}

std::shared_ptr<RowCache> FindBook(const Catalog& a_catalog, const SourceFile& a_source)
{
    for (const auto& [path, cache] : a_catalog.caches) {
        if (cache->GetSource().isBook && path.parent_path() == a_source.path.parent_path() &&
            path.stem().stem() == a_source.path.stem())
            return cache;
    }
    return nullptr;
}

void AddInstrument(Catalog& a_catalog, const std::shared_ptr<RowCache>& a_cache, std::size_t a_symbol)
{
    const SourceFile& source = a_cache->GetSource();
    const auto contents = a_cache->GetContents();
    const CacheContents::Symbol& symbol = contents->symbols[a_symbol];
    const std::string called = symbol.symbol.empty() ? source.path.stem().string() : symbol.symbol;
    const std::string name = symbol.symbol.empty() ? source.name : SafeName(called);
    Catalog::Instrument instrument;
    StoreInstrument& info = instrument.info;
    info.isin = a_catalog.instruments.contains(name) ? source.name + "." + name : name;
    const std::wstring letters = CodePage::Utf8ToWide(called);
    info.longName = CodePage::WideToCp1250(letters);
    // Its own letters, unless another instrument has the name already, or they can't be shown.
    const bool isOwn = info.isin == SafeName(called) && CodePage::FitsCp1250(letters) &&
                       std::ranges::none_of(letters, internal::ShownText::IsControl);
    info.shortName = isOwn ? info.longName : info.isin;
    info.market = source.market;
    info.groups = {S_all};
    if (!source.group.empty())
        info.groups.push_back(source.group);
    info.series = SeriesOf(*contents, symbol.decimals);
    info.interval = contents->interval;
    info.live = contents->interval.IsSingleTick() && symbol.hasTimesOfDay;
    SetNoDays(info);
    if (symbol.rows > 0) {
        info.firstDay = DateTimeTools::GetDate(symbol.parts.front().first);
        info.lastDay = DateTimeTools::GetDate(symbol.parts.back().last);
    }
    instrument.place = {.cache = a_cache,
                        .symbol = a_symbol,
                        .visible = symbol.rows,
                        .book = info.live ? FindBook(a_catalog, source) : nullptr,
                        .operations = FindOperations(a_catalog.folder, source, called)};
    if (!a_catalog.instruments.emplace(info.isin, std::move(instrument)).second)
        a_catalog.LeaveOut(__LINE__, source.path.string() + ": pominięto instrument " + name +
                                         ", bo jego nazwa się powtarza");
}

void ReadSource(Catalog& a_catalog, const Catalog& a_before, const std::shared_ptr<RowCache>& a_cache,
                const std::stop_token& a_stop)
{
    const SourceFile& source = a_cache->GetSource();
    try {
        a_cache->Build(a_stop);
        a_catalog.caches.emplace(source.path, a_cache);
    } catch (const std::exception& failure) {
        if (a_stop.stop_requested())
            throw;
        // Somebody may just be writing it: what was read before stays in use.
        const auto before = a_before.caches.find(source.path);
        const bool isKept =
            before != a_before.caches.end() && before->second->GetSource().name == source.name;
        if (isKept)
            a_catalog.caches.insert(*before);
        // The text says file, line and what would be accepted.
        const auto* const fault = dynamic_cast<const rows::RowsFault*>(&failure);
        const bool sortsIt = fault != nullptr && fault->GetParts().help == rows::EOptionSort;
        a_catalog.LeaveOut(__LINE__,
                           (isKept ? "Zmiany w pliku pominięto: " : "Plik pominięto: ") +
                               std::string(failure.what()) +
                               (sortsIt ? "; można je uporządkować opcją Sort (kalvento watch --sort)" : ""));
    }
}

void AddInstruments(Catalog& a_catalog)
{
    for (const auto& [path, cache] : a_catalog.caches) {
        const std::size_t count = cache->GetSource().isBook ? 0 : cache->GetContents()->symbols.size();
        for (std::size_t symbol = 0; symbol < count; ++symbol)
            AddInstrument(a_catalog, cache, symbol);
    }
    for (const auto& [path, cache] : a_catalog.caches) {
        const bool isUsed = std::ranges::any_of(
            a_catalog.instruments, [&](const auto& a_entry) { return a_entry.second.place.book == cache; });
        if (cache->GetSource().isBook && !isUsed)
            a_catalog.LeaveOut(__LINE__, path.string() + ": nie ma pliku transakcji, do którego należałby "
                                                         "ten arkusz zleceń");
    }
}

void PrepareDay(Catalog::Instrument& a_instrument, std::int64_t a_day, std::set<std::int64_t>& a_seconds)
{
    const Catalog::Place& place = a_instrument.place;
    a_instrument.day = DayRows(*place.cache, place.symbol, a_day);
    if (place.book)
        a_instrument.bookDay = DayRows(*place.book, 0, a_day);
    // Later days are never played, so they don't count as days with rows.
    const std::uint64_t rows = a_instrument.day.RowsAt((a_day + 1) * TimeParts::S_secondsOfDay);
    if (rows == 0)
        SetNoDays(a_instrument.info);
    else
        a_instrument.info.lastDay =
            DateTimeTools::GetDate(place.cache->ReadRows(place.symbol, rows - 1, rows).TimeSeries().front());
    a_instrument.day.AddSeconds(a_seconds);
    a_instrument.bookDay.AddSeconds(a_seconds);
}

void PrepareDay(Catalog& a_catalog)
{
    std::set<std::int64_t> seconds;
    for (auto place = a_catalog.instruments.begin(); place != a_catalog.instruments.end();) {
        try {
            if (place->second.info.live && a_catalog.day)
                PrepareDay(place->second, *a_catalog.day, seconds);
            ++place;
        } catch (const std::exception& failure) {
            a_catalog.LeaveOut(__LINE__, "Instrument pominięto: " + CodePage::Cp1250ToUtf8(failure.what()));
            place = a_catalog.instruments.erase(place);
        }
    }
    a_catalog.seconds.assign(seconds.begin(), seconds.end());
}

// Whether all rows of an instrument that were seen are still the same.
bool GoesOn(const Catalog& a_before, const Catalog::Instrument& a_old, const Catalog& a_now,
            const Catalog::Instrument& a_new)
{
    // An earlier day would take back rows that were seen.
    if (a_new.info.live && a_before.day && (!a_now.day || *a_now.day < *a_before.day))
        return false;
    const auto oldContents = a_old.place.cache->GetContents();
    const auto newContents = a_new.place.cache->GetContents();
    return a_old.place.cache->GetSource().path == a_new.place.cache->GetSource().path &&
           oldContents->symbols[a_old.place.symbol].symbol ==
               newContents->symbols[a_new.place.symbol].symbol &&
           (oldContents->fingerprint == newContents->fingerprint ||
            oldContents->fingerprint == newContents->extendedFingerprint);
}

} // namespace

std::shared_ptr<Catalog> CatalogMaker::Make(FolderContents a_folder, const Catalog& a_before,
                                            const std::stop_token& a_stop)
{
    auto made = std::make_shared<Catalog>();
    made->folder = std::move(a_folder);
    for (const std::filesystem::path& path : made->folder.unreadable)
        made->LeaveOut(__LINE__,
                       path.string() + ": nie można odczytać; podawane jest to, co wczytano wcześniej");
    ReadSources(*made, a_before, a_stop);
    AddInstruments(*made);
    ChooseDay(*made);
    if (!m_options.listOnly)
        PrepareDay(*made);
    NumberGenerations(*made, a_before);
    return made;
}

void CatalogMaker::ReadSources(Catalog& a_catalog, const Catalog& a_before, const std::stop_token& a_stop)
{
    std::vector<std::shared_ptr<RowCache>> toRead;
    for (const SourceFile& source : a_catalog.folder.sources) {
        const auto known = a_before.caches.find(source.path);
        if (known != a_before.caches.end() && known->second->GetSource() == source) {
            a_catalog.caches.insert(*known);
            continue;
        }
        auto cache =
            std::make_shared<RowCache>(source, WidePath::ToPath(m_host.folderOf(source.name)), m_cacheHost);
        if (cache->Load())
            a_catalog.caches.emplace(source.path, std::move(cache));
        else
            toRead.push_back(std::move(cache));
    }
    if (!toRead.empty() && m_host.addToDo)
        m_host.addToDo(static_cast<unsigned int>(toRead.size()));
    for (const auto& cache : toRead) {
        ReadSource(a_catalog, a_before, cache, a_stop);
        if (m_host.setDone)
            m_host.setDone(++m_done);
    }
}

void CatalogMaker::ChooseDay(Catalog& a_catalog) const
{
    a_catalog.day = kalvento::rows::ParseDateText(m_options.day);
    if (!a_catalog.day && !m_options.day.empty())
        a_catalog.LeaveOut(__LINE__, "Opcja Day: \"" + m_options.day +
                                         "\" nie jest datą, oczekiwano na przykład 2024-08-08; "
                                         "odtwarzany jest ostatni dzień");
    if (a_catalog.day)
        return;
    for (const auto& [isin, instrument] : a_catalog.instruments) {
        if (instrument.info.live) // an empty day comes before all others
            a_catalog.day = std::max(a_catalog.day, std::optional(TimeParts::DayOf(instrument.info.lastDay)));
    }
}

void CatalogMaker::NumberGenerations(Catalog& a_catalog, const Catalog& a_before)
{
    std::size_t known = 0;
    for (auto& [isin, instrument] : a_catalog.instruments) {
        const auto old = a_before.instruments.find(isin);
        const bool goesOn =
            old != a_before.instruments.end() && GoesOn(a_before, old->second, a_catalog, instrument);
        instrument.info.generation = goesOn ? old->second.info.generation : ++m_generations;
        known += goesOn ? 1 : 0;
    }
    a_catalog.keepsRows = known == a_before.instruments.size();
}

} // namespace kalvento::files
