#include "file_provider/RowCache.h"

#include "file_provider/FingerprintSource.h"
#include "file_provider/PartWriter.h"
#include "file_provider/RowIndex.h"
#include "file_provider/StoreLog.h"
#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/FileTools.h"
#include "series/Offers.h"
#include "text_rows/ByteSource.h"
#include "text_rows/ReadOptions.h"
#include "text_rows/RowReader.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace kalvento::files {

namespace {

constexpr std::size_t S_readRows = 4096;

/// How rows of a source are read. A book has no prices of its own: the first of its columns stands in for them.
rows::ReadOptions OptionsFor(const SourceFile& a_source, bool a_sorts)
{
    rows::ReadOptions options;
    options.sort = a_sorts;
    options.findSymbols = !a_source.isBook;
    if (a_source.isBook)
        options.pricesFrom = Offers::Series;
    return options;
}

/// Whether both describe the same parts with the same rows.
bool HasSameShape(const CacheContents& a_left, const CacheContents& a_right)
{
    using Part = CacheContents::Part;
    const auto sameParts = [](const CacheContents::Symbol& a_one, const CacheContents::Symbol& a_other) {
        return std::ranges::equal(a_one.parts, a_other.parts, {}, &Part::rows, &Part::rows);
    };
    return a_left.HasSameColumns(a_right) && std::ranges::equal(a_left.symbols, a_right.symbols, sameParts);
}

} // namespace

RowCache::RowCache(SourceFile a_source, std::filesystem::path a_folder, std::shared_ptr<CacheHost> a_host)
    : m_source(std::move(a_source)), m_host(std::move(a_host)), m_files(std::move(a_folder))
{}

std::shared_ptr<const CacheContents> RowCache::GetContents() const
{
    const std::lock_guard lock(m_mutex);
    return m_contents;
}

void RowCache::SetContents(std::shared_ptr<const CacheContents> a_contents)
{
    const std::lock_guard lock(m_mutex);
    m_contents = std::move(a_contents);
}

bool RowCache::Load()
{
    auto contents = RowIndex::Load(m_files);
    if (!contents)
        return false;
    const bool isOfSource = contents->stamp == m_source.stamp && contents->source == m_source.path;
    SetContents(std::make_shared<const CacheContents>(*std::move(contents)));
    return isOfSource;
}

void RowCache::Build(const std::stop_token& a_stop)
{
    SetContents(MakeContents(a_stop));
}

std::shared_ptr<const CacheContents> RowCache::MakeContents(const std::stop_token& a_stop) const
{
    const auto older = GetContents();
    auto contents = std::make_shared<CacheContents>();
    contents->source = m_source.path;
    contents->stamp = m_source.stamp;
    if (older)
        contents->generation = older->generation + 1;
    ++m_host->textsRead;
    const auto file = rows::ByteSource::Open(m_source.path.string());
    FingerprintSource source(*file, m_source.stamp.size, older ? older->stamp.size : 0, a_stop);
    const rows::ReadOptions options = OptionsFor(m_source, m_host->sorts);
    rows::ReadHooks hooks;
    hooks.turned = [this] {
        WriteLog(__LINE__, m_source.path.string() +
                               ": wiersze biegną od najnowszego do najstarszego; zostały odwrócone");
    };
    rows::RowReader reader(source, options, std::move(hooks));
    contents->interval = reader.GetLayout().interval;
    contents->series = reader.GetLayout().series;
    contents->priceMeans = reader.GetLayout().priceMeans;
    if (!reader.GetLayout().hasSymbols)
        contents->symbols.resize(1);

    PartWriter writer(m_files, *contents, m_host->writeFailureTold, m_host->storesRows);
    rows::RowBlock block;
    while (reader.Read(block, S_readRows))
        writer.Add(block, reader.GetSymbols());
    const bool isWritten = writer.Finish();
    contents->fingerprint = source.GetWhole();
    if (older && source.GetMarked() == older->fingerprint && contents->HasSameColumns(*older))
        contents->extendedFingerprint = older->fingerprint;
    if (isWritten)
        RowIndex::Save(m_files, *contents);
    return contents;
}

std::shared_ptr<const History> RowCache::GetPart(std::size_t a_symbol, std::size_t a_part)
{
    for (bool repaired = false;; repaired = true) {
        const auto contents = GetContents();
        const CacheContents::Part& part = contents->symbols[a_symbol].parts[a_part];
        if (part.kept)
            return part.kept;
        const std::filesystem::path path = m_files.PathOf(*contents, a_symbol, a_part);
        if (auto block = m_host->shelf.Find(path, part.checksum))
            return block;
        if (auto block = m_files.Read(*contents, a_symbol, a_part)) {
            m_host->shelf.Put(path, part.checksum, block);
            return block;
        }
        if (repaired)
            throw std::runtime_error(path.string() + ": " + "nie można odczytać zapisanej historii"_cp1250);
        Repair(contents, path);
    }
}

void RowCache::Repair(const std::shared_ptr<const CacheContents>& a_damaged,
                      const std::filesystem::path& a_path)
{
    const std::lock_guard repair(m_repair);
    if (GetContents() != a_damaged)
        return; // another thread has done it
    if (StampOf(m_source.path) != m_source.stamp)
        throw std::runtime_error(m_source.path.string() + ": " + "plik zmienił się od wczytania"_cp1250);
    std::error_code error;
    WriteLog(__LINE__,
             a_path.string() + ": uszkodzony blok historii; plik źródłowy zostanie wczytany ponownie");
    if (StampOf(a_path) && !FileTools::KeepAside(a_path, std::chrono::system_clock::now(), error))
        WriteLog(__LINE__, a_path.string() + ": nie można odłożyć uszkodzonego bloku: " +
                               CodePage::Cp1250ToUtf8(internal::ErrorText(error)));
    auto contents = MakeContents({});
    // Readers have seen these rows: they must not change without their knowledge.
    if (contents->fingerprint != a_damaged->fingerprint || !HasSameShape(*contents, *a_damaged))
        throw std::runtime_error(m_source.path.string() + ": " + "plik zmienił się od wczytania"_cp1250);
    SetContents(std::move(contents));
    RemoveOldParts();
}

std::uint64_t RowCache::FindRow(std::size_t a_symbol, const NDateTime& a_time)
{
    const auto contents = GetContents();
    const CacheContents::Symbol& symbol = contents->symbols[a_symbol];
    const auto part =
        std::partition_point(symbol.parts.begin(), symbol.parts.end(),
                             [&](const CacheContents::Part& a_part) { return a_part.last < a_time; });
    if (part == symbol.parts.end())
        return symbol.rows;
    if (!(part->first < a_time))
        return part->firstRow;
    const auto block = GetPart(a_symbol, static_cast<std::size_t>(part - symbol.parts.begin()));
    const std::vector<NDateTime>& times = block->TimeSeries();
    return part->firstRow +
           static_cast<std::uint64_t>(std::ranges::lower_bound(times, a_time) - times.begin());
}

History RowCache::ReadRows(std::size_t a_symbol, std::uint64_t a_first, std::uint64_t a_last)
{
    const auto contents = GetContents();
    const CacheContents::Symbol& symbol = contents->symbols[a_symbol];
    const std::uint64_t last = std::min(a_last, symbol.rows);
    std::vector<NDateTime> times;
    DataSeriesSet::Columns columns;
    for (const ESeriesId series : contents->series)
        columns.emplace_back(series, std::vector<double>());
    auto part = std::partition_point(
        symbol.parts.begin(), symbol.parts.end(),
        [&](const CacheContents::Part& a_part) { return a_part.firstRow + a_part.rows <= a_first; });
    for (; part != symbol.parts.end() && part->firstRow < last; ++part) {
        const auto block = GetPart(a_symbol, static_cast<std::size_t>(part - symbol.parts.begin()));
        const auto begin = static_cast<std::ptrdiff_t>(std::max(a_first, part->firstRow) - part->firstRow);
        const auto end =
            static_cast<std::ptrdiff_t>(std::min(last, part->firstRow + part->rows) - part->firstRow);
        if (begin >= end)
            break;
        const std::vector<NDateTime>& from = block->TimeSeries();
        times.insert(times.end(), from.begin() + begin, from.begin() + end);
        auto column = columns.begin();
        for (const auto& [series, values] : *block) {
            column->second.insert(column->second.end(), values.begin() + begin, values.begin() + end);
            ++column;
        }
    }
    return {contents->interval.GetInterval(), contents->interval.GetMultiplicity(), std::move(times),
            std::move(columns)};
}

} // namespace kalvento::files
