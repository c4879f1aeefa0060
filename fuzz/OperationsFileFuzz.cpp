#include "history_operations/HistoryOperations.h"
#include "history_operations/OperationsText.h"
#include "series/History.h"
#include "settings/Settings.h"
#include "velo/Log.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

std::string TreeOf(const HistoryOperations& a_operations)
{
    Settings settings;
    a_operations.SerializeState(settings);
    return settings.ConvertToString();
}

} // namespace

// The list of any tree that loads survives storing, may be cut, written as text and applied.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    static const bool quiet =
        VeloTools::Log::Instance().SetLogFolder(std::filesystem::temp_directory_path() / "kalvento-fuzz");
    if (!quiet)
        std::abort();

    Settings settings;
    if (!settings.ConvertFromString({reinterpret_cast<const char*>(a_data), a_size}))
        return 0;
    const HistoryOperations operations(settings);
    Settings stored;
    operations.SerializeState(stored);
    const HistoryOperations once(stored);
    if (TreeOf(once) != TreeOf(operations))
        std::abort();

    const NDateTime day(2021, 3, 2);
    const HistoryOperations usable = operations.PrapareOperationThatCanBeUse(day);
    if (!usable.CanBeUse(day))
        std::abort();
    if (const auto text = OperationsText::Write(operations)) {
        HistoryOperations back;
        if (!back.Parse(*text) || back.end() - back.begin() != operations.end() - operations.begin())
            std::abort();
    }
    History history(EIntervalDay, 1, {NDateTime(2021, 3, 1), day, NDateTime(2021, 3, 3)},
                    {{Price, {1.0, 2.0, 3.0}}, {Volume, {1.0, 2.0}}});
    history.ApplyDataOperations(operations);
    if (history.GetRecordsCount() != 3)
        std::abort();
    return 0;
}
