#include "file_provider/RowIndex.h"

#include "file_provider/Fingerprint.h"
#include "platform/WidePath.h"
#include "settings/Settings.h"
#include "text_rows/RowSeries.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

namespace kalvento::files {

namespace {

constexpr const char* S_indexRoot = "RowIndex";
constexpr const char* S_indexName = "Index.xml";
// Goes up when the same text would give other parts: all are then made again.
constexpr int S_indexVersion = 1;

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

std::wstring PathIn(const PartFiles& a_files)
{
    return WidePath::ToWide(a_files.GetFolder() / S_indexName);
}

ESeriesId SeriesIn(const Settings& a_node)
{
    return static_cast<ESeriesId>(static_cast<unsigned int>(a_node));
}

// False where they can't be those of a file of rows.
bool ReadColumns(const Settings& a_index, CacheContents& a_contents)
{
    a_contents.interval = IntervalAndMultiplicity(a_index[XML_INTERVAL]);
    a_contents.priceMeans = SeriesIn(a_index[XML_PRICE_MEANS]);
    std::vector<ESeriesId>& series = a_contents.series;
    const Settings& nodes = a_index[XML_SERIES];
    for (auto node = nodes.begin_unnamed(); node != nodes.end_unnamed(); ++node)
        series.push_back(SeriesIn(*node));
    return a_contents.interval.IsValid() && !series.empty() && series.front() > Time &&
           std::is_sorted(series.begin(), series.end(), std::less_equal<>()) &&
           std::find(series.begin(), series.end(), Price) != series.end();
}

// A part of the last symbol. False where it makes no sense or its file is missing.
bool ReadPart(const Settings& a_node, const PartFiles& a_files, CacheContents& a_contents)
{
    CacheContents::Symbol& symbol = a_contents.symbols.back();
    CacheContents::Part part;
    part.firstRow = symbol.rows;
    part.rows = a_node[XML_ROWS];
    part.bytes = a_node[XML_BYTES];
    part.checksum = a_node[XML_CHECKSUM];
    part.first = NDateTime(a_node[XML_FIRST]);
    part.last = NDateTime(a_node[XML_LAST]);
    const auto stamp =
        StampOf(a_files.PathOf(a_contents, a_contents.symbols.size() - 1, symbol.parts.size()));
    if (part.rows == 0 || part.rows > CacheContents::S_partRows || !part.first.IsValid() ||
        !part.last.IsValid() || part.last < part.first || !stamp || stamp->size != part.bytes)
        return false;
    symbol.rows += part.rows;
    symbol.parts.push_back(std::move(part));
    return true;
}

} // namespace

std::optional<CacheContents> RowIndex::Load(const PartFiles& a_files)
{
    Settings file;
    if (!file.LoadFromFile(PathIn(a_files), S_indexRoot))
        return std::nullopt;
    // A damaged index may still read well, and would then promise rows that aren't there.
    const Settings& index = std::as_const(file)[XML_CONTENT];
    if (static_cast<std::uint64_t>(std::as_const(file)[XML_CHECKSUM]) !=
            Fingerprint::Of(index.ConvertToString()) ||
        static_cast<int>(index[XML_VERSION]) != S_indexVersion)
        return std::nullopt;

    CacheContents contents;
    contents.source = WidePath::ToPath(static_cast<std::wstring>(index[XML_SOURCE]));
    contents.stamp = {index[XML_SIZE], index[XML_MODIFIED]};
    contents.generation = index[XML_GENERATION];
    contents.fingerprint = index[XML_FINGERPRINT];
    if (!ReadColumns(index, contents))
        return std::nullopt;
    const Settings& symbols = index[XML_SYMBOLS];
    for (auto node = symbols.begin_unnamed(); node != symbols.end_unnamed(); ++node) {
        CacheContents::Symbol& symbol = contents.symbols.emplace_back();
        symbol.symbol = static_cast<const std::string&>((*node)[XML_SYMBOL]);
        symbol.decimals = std::min<unsigned int>((*node)[XML_DECIMALS], rows::S_mostDecimals);
        symbol.hasTimesOfDay = (*node)[XML_TIMES_OF_DAY];
        const Settings& parts = (*node)[XML_PARTS];
        for (auto child = parts.begin_unnamed(); child != parts.end_unnamed(); ++child) {
            if (!ReadPart(*child, a_files, contents))
                return std::nullopt;
        }
    }
    return contents;
}

void RowIndex::Save(const PartFiles& a_files, const CacheContents& a_contents)
{
    Settings file;
    Settings& index = file[XML_CONTENT];
    index[XML_VERSION] = S_indexVersion;
    index[XML_SOURCE] = WidePath::ToWide(a_contents.source);
    index[XML_SIZE] = a_contents.stamp.size;
    index[XML_MODIFIED] = a_contents.stamp.modified;
    index[XML_FINGERPRINT] = a_contents.fingerprint;
    index[XML_GENERATION] = a_contents.generation;
    a_contents.interval.SerializeState(index[XML_INTERVAL]);
    index[XML_PRICE_MEANS] = static_cast<unsigned int>(a_contents.priceMeans);
    for (const ESeriesId series : a_contents.series)
        index[XML_SERIES].AddUnnamed() = static_cast<unsigned int>(series);
    for (const CacheContents::Symbol& symbol : a_contents.symbols) {
        Settings& node = index[XML_SYMBOLS].AddUnnamed();
        node[XML_SYMBOL] = symbol.symbol;
        node[XML_DECIMALS] = symbol.decimals;
        node[XML_TIMES_OF_DAY] = symbol.hasTimesOfDay;
        for (const CacheContents::Part& part : symbol.parts) {
            Settings& child = node[XML_PARTS].AddUnnamed();
            child[XML_ROWS] = part.rows;
            child[XML_BYTES] = part.bytes;
            child[XML_CHECKSUM] = part.checksum;
            part.first.SerializeState(child[XML_FIRST]);
            part.last.SerializeState(child[XML_LAST]);
        }
    }
    file[XML_CHECKSUM] = Fingerprint::Of(index.ConvertToString());
    file.SaveToFile(PathIn(a_files), S_indexRoot);
}

} // namespace kalvento::files
