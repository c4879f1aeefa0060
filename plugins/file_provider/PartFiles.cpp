#include "file_provider/PartFiles.h"

#include "file_provider/Fingerprint.h"
#include "platform/FileTools.h"

#include <exception>
#include <set>
#include <sstream>
#include <string>

namespace kalvento::files {

namespace {

const std::string S_start = "Rows-";
const std::string S_ending = ".block";

std::string StartOf(std::uint64_t a_generation)
{
    return S_start + std::to_string(a_generation) + "-";
}

} // namespace

std::filesystem::path PartFiles::PathOf(const CacheContents& a_contents, std::size_t a_symbol,
                                        std::size_t a_part) const
{
    return m_folder / (StartOf(a_contents.generation) + std::to_string(a_symbol) + "-" +
                       std::to_string(a_part) + S_ending);
}

std::shared_ptr<const History> PartFiles::Read(const CacheContents& a_contents, std::size_t a_symbol,
                                               std::size_t a_part) const
{
    const CacheContents::Part& part = a_contents.symbols[a_symbol].parts[a_part];
    std::error_code error;
    const auto bytes = FileTools::ReadFile(PathOf(a_contents, a_symbol, a_part), part.bytes, error);
    if (!bytes || bytes->size() != part.bytes || Fingerprint::Of(*bytes) != part.checksum)
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
    const bool isIt = block->IsValid() && block->GetRecordsCount() == part.rows &&
                      block->GetSeries() == series && block->GetIntervalData().Equals(a_contents.interval);
    return isIt ? block : nullptr;
}

void PartFiles::RemoveOthers(std::uint64_t a_generation) const
{
    std::error_code error;
    for (const auto& entry : EntriesOf(m_folder, error)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(S_start) && name.ends_with(S_ending) && !name.starts_with(StartOf(a_generation)))
            std::filesystem::remove(entry.path(), error);
    }
}

} // namespace kalvento::files
