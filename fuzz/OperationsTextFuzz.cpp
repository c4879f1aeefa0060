#include "history_operations/HistoryOperations.h"
#include "history_operations/OperationsText.h"
#include "velo/Log.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string_view>

// A list is taken whole or not at all, and what can be written as text reads back as the same list.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    static const bool quiet =
        VeloTools::Log::Instance().SetLogFolder(std::filesystem::temp_directory_path() / "kalvento-fuzz");
    if (!quiet)
        std::abort();

    HistoryOperations operations;
    if (!operations.Parse({reinterpret_cast<const char*>(a_data), a_size})) {
        if (operations.Version() != 0 || operations.begin() != operations.end())
            std::abort();
        return 0;
    }
    const auto text = OperationsText::Write(operations);
    if (!text)
        return 0; // a date of time's edge
    HistoryOperations again;
    if (!again.Parse(*text) || OperationsText::Write(again) != text)
        std::abort();
    return 0;
}
