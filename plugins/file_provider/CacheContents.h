#pragma once

#include "file_provider/SourceFolder.h"
#include "series/ESeriesId.h"
#include "series/History.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kalvento::files {

/// What is known of a file of rows that was gone through.
struct CacheContents {
    /// Some rows that follow one another, in a file of their own.
    struct Part {
        std::uint64_t firstRow = 0;
        std::uint64_t rows = 0;
        std::uint64_t bytes = 0;    ///< Of the file.
        std::uint64_t checksum = 0; ///< Of the file's bytes.
        NDateTime first;
        NDateTime last;
        std::shared_ptr<const History> kept; ///< Where the file couldn't be written; else null.
    };

    /// One instrument of a file of rows.
    struct Symbol {
        std::string symbol; ///< Empty for a file of one instrument.
        std::vector<Part> parts;
        std::uint64_t rows = 0;
        unsigned int decimals = 0;  ///< Decimal places of the prices, at most 6.
        bool hasTimesOfDay = false; ///< Some row isn't of midnight.
    };

    static constexpr std::uint64_t S_partRows = 65536; ///< Of a part, at most.

    std::filesystem::path source;
    FileStamp stamp; ///< Of the source when it was gone through.
    /// In the names of the part files: those of an older one aren't overwritten.
    std::uint64_t generation = 1;
    std::uint64_t fingerprint = 0; ///< Of the source's bytes.
    IntervalAndMultiplicity interval;
    std::vector<ESeriesId> series; ///< Ascending.
    ESeriesId priceMeans = Price;  ///< Of a book: the series that stands in the column of the prices.
    std::vector<Symbol> symbols;
    /// Fingerprint of the contents that these took the place of, where the source only grew since then.
    std::optional<std::uint64_t> extendedFingerprint;

    bool HasSameColumns(const CacheContents& a_other) const
    {
        return interval.Equals(a_other.interval) && series == a_other.series;
    }
};

} // namespace kalvento::files
