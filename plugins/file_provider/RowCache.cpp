#include "file_provider/RowCache.h"

#include "platform/CodePage.h"
#include "platform/FileTools.h"
#include "platform/WidePath.h"
#include "series/Offers.h"
#include "settings/Settings.h"
#include "text_rows/ByteSource.h"
#include "text_rows/ReadOptions.h"
#include "text_rows/RowReader.h"
#include "text_rows/RowSeries.h"
#include "velo/Log.h"

#include <algorithm>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace kalvento::files {

namespace {

constexpr const char* S_indexRoot = "RowIndex";
constexpr const char* S_indexName = "Index.xml";
constexpr std::string_view S_partStart = "Rows-";
constexpr std::string_view S_partEnding = ".block";
// Raised when the same text would give other parts: all are made again then.
constexpr int S_indexVersion = 1;
// Rows of all instruments that wait to become a part; with many instruments their parts get smaller.
constexpr std::uint64_t S_waitingRows = std::uint64_t{1} << 20U;
constexpr std::size_t S_readRows = 4096;

constexpr const char* XML_VERSION = "Version";
constexpr const char* XML_SOURCE = "Source";
constexpr const char* XML_SIZE = "Size";
constexpr const char* XML_MODIFIED = "Modified";
constexpr const char* XML_FINGERPRINT = "Fingerprint";
constexpr const char* XML_GENERATION = "Generation";
constexpr const char* XML_INTERVAL = "Interval";
constexpr const char* XML_SERIES = "Series";
constexpr const char* XML_PRICE_MEANS = "PriceMeans";
constexpr const char* XML_SYMBOLS = "Symbols";
constexpr const char* XML_SYMBOL = "Symbol";
constexpr const char* XML_DECIMALS = "Decimals";
constexpr const char* XML_TIMES_OF_DAY = "TimesOfDay";
constexpr const char* XML_PARTS = "Parts";
constexpr const char* XML_ROWS = "Rows";
constexpr const char* XML_BYTES = "Bytes";
constexpr const char* XML_CHECKSUM = "Checksum";
constexpr const char* XML_FIRST = "First";
constexpr const char* XML_LAST = "Last";
constexpr const char* XML_CONTENT = "Content";

/// FNV-1a, 64 bits: tells damage and change, not malice. Source: RFC 9923, "The FNV Non-Cryptographic Hash Algorithm".
class Fingerprint {
public:
    void Add(std::string_view a_bytes)
    {
        for (const char byte : a_bytes)
            m_value = (m_value ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    std::uint64_t Get() const { return m_value; }

private:
    std::uint64_t m_value = 0xcbf29ce484222325U;
};

std::uint64_t ChecksumOf(std::string_view a_bytes)
{
    Fingerprint fingerprint;
    fingerprint.Add(a_bytes);
    return fingerprint.Get();
}

/// Whether both tell of the same parts with the same rows.
bool HasSameShape(const CacheContents& a_left, const CacheContents& a_right)
{
    const auto samePart = [](const CachePart& a_one, const CachePart& a_other) {
        return a_one.rows == a_other.rows;
    };
    return a_left.interval.Equals(a_right.interval) && a_left.series == a_right.series &&
           std::equal(a_left.symbols.begin(), a_left.symbols.end(), a_right.symbols.begin(),
                      a_right.symbols.end(), [&](const CachedSymbol& a_one, const CachedSymbol& a_other) {
                          return std::equal(a_one.parts.begin(), a_one.parts.end(), a_other.parts.begin(),
                                            a_other.parts.end(), samePart);
                      });
}

/// Passes the first a_size bytes of a source on, takes their fingerprint on the way, and that of its first a_mark
/// bytes.
class FingerprintSource final : public rows::ByteSource {
public:
    /// a_size: that of the source's stamp. What has been appended since belongs to the next reading, otherwise what is
    /// known of the size wouldn't be that of the fingerprint.
    FingerprintSource(rows::ByteSource& a_source, std::uint64_t a_size, std::uint64_t a_mark,
                      const std::stop_token& a_stop)
        : ByteSource(a_source.GetName(), a_size),
          m_source(a_source),
          m_bytesLeft(a_size),
          m_left(a_mark),
          m_stop(a_stop)
    {}
    std::size_t Read(char* a_bytes, std::size_t a_size) override
    {
        if (m_stop.stop_requested())
            throw std::runtime_error("Przerwano wczytywanie pliku"_cp1250);
        const std::size_t count =
            m_source.Read(a_bytes, static_cast<std::size_t>(std::min<std::uint64_t>(a_size, m_bytesLeft)));
        m_bytesLeft -= count;
        const std::size_t before = static_cast<std::size_t>(std::min<std::uint64_t>(m_left, count));
        m_whole.Add({a_bytes, before});
        m_left -= before;
        // A last line without its end may go on: then the rows before aren't all as they were.
        if (before > 0 && m_left == 0 && a_bytes[before - 1] == '\n')
            m_marked = m_whole.Get();
        m_whole.Add({a_bytes + before, count - before});
        return count;
    }
    std::uint64_t GetWhole() const { return m_whole.Get(); }
    /// Empty where there are fewer bytes, and where they don't end with a line.
    std::optional<std::uint64_t> GetMarked() const { return m_marked; }

private:
    rows::ByteSource& m_source;
    std::uint64_t m_bytesLeft;
    std::uint64_t m_left;
    const std::stop_token& m_stop;
    Fingerprint m_whole;
    std::optional<std::uint64_t> m_marked;
};

/// How rows of a source are read. A book has no prices of its own: the first of its columns stands in for them.
rows::ReadOptions OptionsFor(const SourceFile& a_source)
{
    rows::ReadOptions options;
    options.findSymbols = !a_source.isBook;
    if (a_source.isBook)
        options.pricesFrom = Offers::Series;
    return options;
}

void Log(int a_line, const std::string& a_utf8)
{
    VeloTools::Log::Instance().Write("FileStore", a_line,
                                     CodePage::WideToCp1250(CodePage::Utf8ToWide(a_utf8)));
}

} // namespace

/// Collects rows of many instruments into parts and writes those.
class RowCache::Builder {
public:
    Builder(const RowCache& a_cache, CacheContents& a_contents) : m_cache(a_cache), m_contents(a_contents) {}

    void Add(const rows::RowBlock& a_block)
    {
        for (std::size_t row = 0; row < a_block.rows; ++row) {
            const std::size_t symbol = m_contents.symbols.size() == 1 && m_contents.symbols[0].symbol.empty()
                                           ? 0
                                           : a_block.symbols[row];
            AddRow(symbol, a_block, row);
        }
    }
    void SetSymbols(const std::vector<std::string>& a_names)
    {
        for (std::size_t place = m_contents.symbols.size(); place < a_names.size(); ++place)
            m_contents.symbols.emplace_back().symbol = a_names[place];
        m_waiting.resize(m_contents.symbols.size());
    }
    void Finish()
    {
        for (std::size_t symbol = 0; symbol < m_waiting.size(); ++symbol)
            Flush(symbol);
    }
    bool IsWritten() const { return m_written; }

private:
    struct Waiting {
        std::vector<NDateTime> times;
        std::vector<std::vector<double>> columns;
    };

    void AddRow(std::size_t a_symbol, const rows::RowBlock& a_block, std::size_t a_row)
    {
        Waiting& waiting = m_waiting[a_symbol];
        CachedSymbol& symbol = m_contents.symbols[a_symbol];
        waiting.columns.resize(m_contents.series.size());
        const NDateTime& time = a_block.times[a_row];
        waiting.times.push_back(time);
        symbol.hasTimesOfDay = symbol.hasTimesOfDay || time.GetAbsoluteTime() != 0;
        for (std::size_t column = 0; column < waiting.columns.size(); ++column) {
            waiting.columns[column].push_back(a_block.columns[column][a_row]);
            if (m_contents.series[column] == Price && symbol.decimals < rows::S_mostDecimals)
                symbol.decimals = std::max(symbol.decimals, rows::DecimalsOf(a_block.columns[column][a_row]));
        }
        ++m_rows;
        if (waiting.times.size() == S_partRows)
            Flush(a_symbol);
        else if (m_rows >= S_waitingRows)
            Flush(static_cast<std::size_t>(
                std::max_element(m_waiting.begin(), m_waiting.end(),
                                 [](const Waiting& a_left, const Waiting& a_right) {
                                     return a_left.times.size() < a_right.times.size();
                                 }) -
                m_waiting.begin()));
    }
    void Flush(std::size_t a_symbol)
    {
        Waiting waiting = std::exchange(m_waiting[a_symbol], {});
        if (waiting.times.empty())
            return;
        m_rows -= waiting.times.size();
        CachedSymbol& symbol = m_contents.symbols[a_symbol];
        CachePart part;
        part.firstRow = symbol.rows;
        part.rows = waiting.times.size();
        part.first = waiting.times.front();
        part.last = waiting.times.back();
        DataSeriesSet::Columns columns;
        for (std::size_t column = 0; column < waiting.columns.size(); ++column)
            columns.emplace_back(m_contents.series[column], std::move(waiting.columns[column]));
        auto block = std::make_shared<const History>(m_contents.interval.GetInterval(),
                                                     m_contents.interval.GetMultiplicity(),
                                                     std::move(waiting.times), std::move(columns));
        std::ostringstream stream;
        block->Write(stream);
        const std::string bytes = std::move(stream).str();
        part.bytes = bytes.size();
        part.checksum = ChecksumOf(bytes);
        std::error_code error;
        m_written =
            m_written &&
            FileTools::ReplaceFile(m_cache.PartPath(m_contents, a_symbol, symbol.parts.size()), bytes, error);
        if (!m_written) {
            part.kept = std::move(block);
            if (!m_cache.m_host->writeFailureTold.exchange(true))
                Log(__LINE__, "Nie można zapisać historii w folderze " + m_cache.m_folder.string() + " (" +
                                  error.message() + "); dane pozostają w pamięci");
        }
        symbol.rows += part.rows;
        symbol.parts.push_back(std::move(part));
    }

    const RowCache& m_cache;
    CacheContents& m_contents;
    std::vector<Waiting> m_waiting;
    std::uint64_t m_rows = 0;
    bool m_written = true;
};

RowCache::RowCache(SourceFile a_source, std::shared_ptr<CacheHost> a_host)
    : m_source(std::move(a_source)),
      m_host(std::move(a_host)),
      m_folder(WidePath::ToPath(m_host->folderOf(m_source.name)))
{}

std::shared_ptr<const CacheContents> RowCache::GetContents() const
{
    const std::lock_guard lock(m_mutex);
    return m_contents;
}

std::filesystem::path RowCache::PartPath(const CacheContents& a_contents, std::size_t a_symbol,
                                         std::size_t a_part) const
{
    return m_folder / (std::string(S_partStart) + std::to_string(a_contents.generation) + "-" +
                       std::to_string(a_symbol) + "-" + std::to_string(a_part) + std::string(S_partEnding));
}

bool RowCache::Load()
{
    Settings file;
    if (!file.LoadFromFile(WidePath::ToWide(m_folder / S_indexName), S_indexRoot))
        return false;
    // A damaged index may still read well, and would then promise rows that aren't there.
    const Settings& index = std::as_const(file)[XML_CONTENT];
    if (static_cast<std::uint64_t>(std::as_const(file)[XML_CHECKSUM]) != ChecksumOf(index.ConvertToString()))
        return false;
    auto contents = ReadIndex(index);
    if (!contents)
        return false;
    const FileStamp stamp{index[XML_SIZE], index[XML_MODIFIED]};
    const std::wstring source = index[XML_SOURCE];
    const std::lock_guard lock(m_mutex);
    m_contents = std::make_shared<const CacheContents>(*std::move(contents));
    return stamp == m_source.stamp && source == WidePath::ToWide(m_source.path);
}

void RowCache::Build(const std::stop_token& a_stop)
{
    auto contents = BuildContents(a_stop);
    const std::lock_guard lock(m_mutex);
    m_contents = std::move(contents);
}

std::shared_ptr<const CacheContents> RowCache::BuildContents(const std::stop_token& a_stop)
{
    const auto older = GetContents();
    Settings index;
    std::uint64_t mark = 0;
    if (older && index.LoadFromFile(WidePath::ToWide(m_folder / S_indexName), S_indexRoot))
        mark = index[XML_CONTENT][XML_SIZE];

    auto contents = std::make_shared<CacheContents>();
    contents->generation = older ? older->generation + 1 : 1;
    ++m_host->textsRead;
    const auto file = rows::ByteSource::Open(m_source.path.string());
    FingerprintSource source(*file, m_source.stamp.size, mark, a_stop);
    const rows::ReadOptions options = OptionsFor(m_source);
    rows::RowReader reader(source, options);
    contents->interval = reader.GetLayout().interval;
    contents->series = reader.GetLayout().series;
    contents->priceMeans = reader.GetLayout().priceMeans;
    if (!reader.GetLayout().hasSymbols)
        contents->symbols.resize(1);

    Builder builder(*this, *contents);
    rows::RowBlock block;
    builder.SetSymbols({});
    while (reader.Read(block, S_readRows)) {
        builder.SetSymbols(reader.GetSymbols());
        builder.Add(block);
    }
    builder.Finish();
    contents->fingerprint = source.GetWhole();
    if (older && source.GetMarked() == older->fingerprint && contents->interval.Equals(older->interval) &&
        contents->series == older->series)
        contents->extendedFingerprint = older->fingerprint;
    if (builder.IsWritten())
        SaveIndex(*contents);
    return contents;
}

void RowCache::RemoveOldParts() const
{
    const auto contents = GetContents();
    const std::string own = std::string(S_partStart) + std::to_string(contents->generation) + "-";
    std::vector<std::filesystem::path> old;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(m_folder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with(S_partStart) && name.ends_with(S_partEnding) && !name.starts_with(own))
            old.push_back(entry->path());
    }
    for (const auto& path : old)
        std::filesystem::remove(path, error);
}

void RowCache::SaveIndex(const CacheContents& a_contents) const
{
    Settings file;
    Settings& index = file[XML_CONTENT];
    index[XML_VERSION] = S_indexVersion;
    index[XML_SOURCE] = WidePath::ToWide(m_source.path);
    index[XML_SIZE] = static_cast<unsigned long long>(m_source.stamp.size);
    index[XML_MODIFIED] = static_cast<long long>(m_source.stamp.modified);
    index[XML_FINGERPRINT] = static_cast<unsigned long long>(a_contents.fingerprint);
    index[XML_GENERATION] = static_cast<unsigned long long>(a_contents.generation);
    a_contents.interval.SerializeState(index[XML_INTERVAL]);
    index[XML_PRICE_MEANS] = static_cast<unsigned int>(a_contents.priceMeans);
    for (const ESeriesId series : a_contents.series)
        index[XML_SERIES].AddUnnamed() = static_cast<unsigned int>(series);
    for (const CachedSymbol& symbol : a_contents.symbols) {
        Settings& node = index[XML_SYMBOLS].AddUnnamed();
        node[XML_SYMBOL] = symbol.symbol;
        node[XML_DECIMALS] = symbol.decimals;
        node[XML_TIMES_OF_DAY] = symbol.hasTimesOfDay;
        for (const CachePart& part : symbol.parts) {
            Settings& child = node[XML_PARTS].AddUnnamed();
            child[XML_ROWS] = static_cast<unsigned long long>(part.rows);
            child[XML_BYTES] = static_cast<unsigned long long>(part.bytes);
            child[XML_CHECKSUM] = static_cast<unsigned long long>(part.checksum);
            part.first.SerializeState(child[XML_FIRST]);
            part.last.SerializeState(child[XML_LAST]);
        }
    }
    file[XML_CHECKSUM] = static_cast<unsigned long long>(ChecksumOf(index.ConvertToString()));
    // Where it can't be written, which is logged there, the text is read again at the next start.
    file.SaveToFile(WidePath::ToWide(m_folder / S_indexName), S_indexRoot);
}

// Takes nothing on trust: what an index claims must be possible, and its parts must lie beside it in the length told.
std::optional<CacheContents> RowCache::ReadIndex(const Settings& a_index) const
{
    CacheContents contents;
    if (static_cast<int>(a_index[XML_VERSION]) != S_indexVersion)
        return std::nullopt;
    contents.generation = a_index[XML_GENERATION];
    contents.fingerprint = a_index[XML_FINGERPRINT];
    contents.interval = IntervalAndMultiplicity(a_index[XML_INTERVAL]);
    contents.priceMeans = static_cast<ESeriesId>(static_cast<unsigned int>(a_index[XML_PRICE_MEANS]));
    const Settings& series = a_index[XML_SERIES];
    for (auto child = series.begin_unnamed(); child != series.end_unnamed(); ++child)
        contents.series.push_back(static_cast<ESeriesId>(static_cast<unsigned int>(*child)));
    if (!contents.interval.IsValid() || contents.series.empty() || contents.series.front() <= Time ||
        !std::is_sorted(contents.series.begin(), contents.series.end(), std::less_equal<>()) ||
        std::find(contents.series.begin(), contents.series.end(), Price) == contents.series.end())
        return std::nullopt;

    const Settings& symbols = a_index[XML_SYMBOLS];
    for (auto node = symbols.begin_unnamed(); node != symbols.end_unnamed(); ++node) {
        CachedSymbol& symbol = contents.symbols.emplace_back();
        symbol.symbol = static_cast<const std::string&>((*node)[XML_SYMBOL]);
        symbol.decimals = std::min<unsigned int>((*node)[XML_DECIMALS], rows::S_mostDecimals);
        symbol.hasTimesOfDay = (*node)[XML_TIMES_OF_DAY];
        const Settings& parts = (*node)[XML_PARTS];
        for (auto child = parts.begin_unnamed(); child != parts.end_unnamed(); ++child) {
            CachePart part;
            part.firstRow = symbol.rows;
            part.rows = (*child)[XML_ROWS];
            part.bytes = (*child)[XML_BYTES];
            part.checksum = (*child)[XML_CHECKSUM];
            part.first = NDateTime((*child)[XML_FIRST]);
            part.last = NDateTime((*child)[XML_LAST]);
            const auto stamp = StampOf(PartPath(contents, contents.symbols.size() - 1, symbol.parts.size()));
            if (part.rows == 0 || part.rows > S_partRows || !part.first.IsValid() || !part.last.IsValid() ||
                part.last < part.first || !stamp || stamp->size != part.bytes)
                return std::nullopt;
            symbol.rows += part.rows;
            symbol.parts.push_back(std::move(part));
        }
    }
    return contents;
}

std::shared_ptr<const History> RowCache::ReadPart(const CacheContents& a_contents, std::size_t a_symbol,
                                                  std::size_t a_part) const
{
    const CachePart& part = a_contents.symbols[a_symbol].parts[a_part];
    std::error_code error;
    const auto bytes = FileTools::ReadFile(PartPath(a_contents, a_symbol, a_part), part.bytes, error);
    if (!bytes || bytes->size() != part.bytes || ChecksumOf(*bytes) != part.checksum)
        return nullptr;
    std::istringstream stream(*bytes);
    auto block =
        std::make_shared<History>(a_contents.interval.GetInterval(), a_contents.interval.GetMultiplicity());
    try {
        block->Read(stream);
    } catch (const std::exception&) {
        return nullptr;
    }
    const std::set<ESeriesId> series(a_contents.series.begin(), a_contents.series.end());
    if (!block->IsValid() || block->GetRecordsCount() != part.rows || block->GetSeries() != series ||
        !block->GetIntervalData().Equals(a_contents.interval))
        return nullptr;
    return block;
}

std::shared_ptr<const History> RowCache::GetPart(std::size_t a_symbol, std::size_t a_part)
{
    for (bool repaired = false;; repaired = true) {
        const auto contents = GetContents();
        const CachePart& part = contents->symbols[a_symbol].parts[a_part];
        if (part.kept)
            return part.kept;
        const std::filesystem::path path = PartPath(*contents, a_symbol, a_part);
        if (auto block = m_host->shelf.Find(path, part.checksum))
            return block;
        if (auto block = ReadPart(*contents, a_symbol, a_part)) {
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
        return; // somebody was here first
    if (StampOf(m_source.path) != m_source.stamp)
        throw std::runtime_error(m_source.path.string() + ": " + "plik zmienił się od wczytania"_cp1250);
    std::error_code error;
    Log(__LINE__, a_path.string() + ": uszkodzony blok historii; plik źródłowy zostanie wczytany ponownie");
    if (StampOf(a_path) && !FileTools::KeepAside(a_path, std::chrono::system_clock::now(), error))
        Log(__LINE__, a_path.string() + ": nie można odłożyć uszkodzonego bloku: " + error.message());
    auto contents = BuildContents({});
    // The rows were seen: they may not become others behind the back of those who saw them.
    if (contents->fingerprint != a_damaged->fingerprint || !HasSameShape(*contents, *a_damaged))
        throw std::runtime_error(m_source.path.string() + ": " + "plik zmienił się od wczytania"_cp1250);
    {
        const std::lock_guard lock(m_mutex);
        m_contents = std::move(contents);
    }
    RemoveOldParts();
}

std::uint64_t RowCache::FindRow(std::size_t a_symbol, const NDateTime& a_time)
{
    const auto contents = GetContents();
    const CachedSymbol& symbol = contents->symbols[a_symbol];
    const auto part = std::partition_point(symbol.parts.begin(), symbol.parts.end(),
                                           [&](const CachePart& a_part) { return a_part.last < a_time; });
    if (part == symbol.parts.end())
        return symbol.rows;
    if (!(part->first < a_time))
        return part->firstRow;
    const auto block = GetPart(a_symbol, static_cast<std::size_t>(part - symbol.parts.begin()));
    const std::vector<NDateTime>& times = block->TimeSeries();
    return part->firstRow +
           static_cast<std::uint64_t>(std::lower_bound(times.begin(), times.end(), a_time) - times.begin());
}

History RowCache::ReadRows(std::size_t a_symbol, std::uint64_t a_first, std::uint64_t a_last)
{
    const auto contents = GetContents();
    const CachedSymbol& symbol = contents->symbols[a_symbol];
    const std::uint64_t last = std::min(a_last, symbol.rows);
    std::vector<NDateTime> times;
    DataSeriesSet::Columns columns;
    for (const ESeriesId series : contents->series)
        columns.emplace_back(series, std::vector<double>());
    auto part = std::partition_point(symbol.parts.begin(), symbol.parts.end(), [&](const CachePart& a_part) {
        return a_part.firstRow + a_part.rows <= a_first;
    });
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
