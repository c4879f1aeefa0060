// The tool's commands on a file of any bytes: they end with one of the exit codes, and what they say and print is text.
#include "kalvento/Tool.h"
#include "platform/CodePage.h"
#include "platform/ShownText.h"
#include "velo/Log.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

// @ is the file. None of them writes elsewhere than to its output.
const std::array<std::vector<std::string>, 20> S_commands = {{
    {"candles", "@", "-i", "5min"},
    {"candles", "@", "-i", "1d", "--format", "jsonl"},
    {"candles", "@", "-i", "3tick", "--format", "table", "--bad-lines", "reject"},
    {"candles", "@", "-i", "1w", "--symbol-column", "symbol", "--order", "drop"},
    {"candles", "@", "-i", "1h", "--format", "block"},
    {"candles", "@", "-i", "1M", "--operations", "@"},
    {"adjust", "@", "--operations", "@"},
    {"operations", "@"},
    {"operations", "@", "--format", "xml"},
    {"operations", "@", "--format", "text"},
    {"check", "@"},
    {"check", "@", "--symbol-column", "symbol"},
    {"show", "@"},
    {"show", "@", "--format", "csv"},
    {"explain", "@", "-i", "5min", "--at", "09:05"},
    {"explain", "@", "-i", "1d", "--at", "2024-08-08"},
    {"prove", "@", "-i", "5min", "--samples", "3"},
    {"live", "@", "-i", "1min", "--no-follow"},
    {"live", "@", "-i", "1h", "--no-follow", "--format", "jsonl", "--symbol-column", "symbol"},
    {"live", "@", "-i", "2tick", "--no-follow", "--format", "csv", "--history", "1"},
}};

void Expect(bool a_holds)
{
    if (!a_holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    static const std::filesystem::path folder = [] {
        auto made = std::filesystem::temp_directory_path() / ("kalvento-fuzz-" + std::to_string(::getpid()));
        std::filesystem::create_directories(made);
        VeloTools::Log::Instance().SetLogFolder(made);
        return made;
    }();
    if (a_size == 0)
        return 0;
    const std::filesystem::path path = folder / "input";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(a_data) + 1, static_cast<std::streamsize>(a_size - 1));
    std::vector<std::string> arguments = S_commands[a_data[0] % S_commands.size()];
    const bool isBlock = arguments.back() == "block";
    const bool isCsv = arguments.back() != "jsonl";
    for (std::string& argument : arguments)
        if (argument == "@")
            argument = path.string();

    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    kalvento::tool::ToolContext context{in, out, err};
    const int code = kalvento::tool::RunTool(arguments, context);
    Expect(code >= EExitOk && code <= EExitDifferent);
    Expect(code == EExitOk || code == EExitDifferent || code == EExitBadData || !err.str().empty());
    // Names of a CSV stay the bytes that they were; all else is for people and for readers of JSON.
    Expect(kalvento::internal::ShownText::Lines(err.str()) == err.str());
    if (!isBlock && !isCsv)
        Expect(CodePage::FindMalformedUtf8(out.str()) == out.str().size());
    return 0;
}
