#include "support/MarketData.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

#include "apps/kalvento/RunToolHere.h"

#include <iomanip>

namespace {

namespace fs = std::filesystem;

void ReplaceAll(std::string& a_text, const std::string& a_what, const std::string& a_by)
{
    for (std::size_t place = 0; (place = a_text.find(a_what, place)) != std::string::npos;
         place += a_by.size())
        a_text.replace(place, a_what.size(), a_by);
}

/// Runs a transcript and writes down what came of it, in the form that transcripts/README.md tells.
class Transcript {
public:
    std::string Replay(const std::string& a_text)
    {
        std::istringstream lines(a_text);
        for (std::string line; std::getline(lines, line);) {
            const bool isFound = line.starts_with("  ") || line.starts_with("! ") || line.starts_with("= ");
            if (m_afterCommand && isFound)
                continue; // what came then; what comes now stands there already
            m_afterCommand = line.starts_with("$");
            m_replayed += line + '\n';
            if (m_afterCommand)
                Run(line.substr(std::min<std::size_t>(2, line.size())));
            else if (line.starts_with("> "))
                std::ofstream(m_folder / line.substr(2)); // to be filled line by line
            else if (line.starts_with("  "))
                Add(line.substr(2));
            if (line.starts_with("> "))
                m_file = line.substr(2);
        }
        return m_replayed;
    }

private:
    void Add(std::string a_line)
    {
        const bool isLast = a_line.ends_with("\\c"); // without an end of line
        if (isLast)
            a_line.erase(a_line.size() - 2);
        for (const auto& [told, meant] :
             {std::pair("\\r", "\r"), {"\\t", "\t"}, {"\\b", "\xEF\xBB\xBF"}, {"\\1", "\1"}})
            ReplaceAll(a_line, told, meant);
        std::ofstream(m_folder / m_file, std::ios::app | std::ios::binary) << a_line << (isLast ? "" : "\n");
    }
    void Run(std::string a_command)
    {
        std::string input;
        if (const std::size_t place = a_command.find(" < "); place != std::string::npos) {
            std::ostringstream bytes;
            bytes << std::ifstream(m_folder / a_command.substr(place + 3), std::ios::binary).rdbuf();
            input = bytes.str();
            a_command.resize(place);
        }
        ReplaceAll(a_command, "@market", MarketData::Path("."));
        ReplaceAll(a_command, "@", m_folder.GetPath().string());
        std::vector<std::string> arguments;
        std::istringstream words(a_command);
        for (std::string word; words >> std::quoted(word);)
            arguments.push_back(word);
        const ToolRun run = RunToolHere(arguments, input);
        Write("  ", run.out);
        Write("! ", run.err);
        if (run.exitCode != 0)
            m_replayed += "= " + std::to_string(run.exitCode) + '\n';
    }
    void Write(const char* a_sign, std::string a_text)
    {
        ReplaceAll(a_text, m_folder.GetPath().string(), "@");
        std::istringstream lines(a_text);
        for (std::string line; std::getline(lines, line);)
            m_replayed += a_sign + line + '\n';
    }

    const TemporaryFolder m_folder;
    std::string m_file;
    std::string m_replayed;
    bool m_afterCommand = false;
};

class TranscriptTest : public testing::TestWithParam<fs::path> {};

std::vector<fs::path> AllTranscripts()
{
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(KALVENTO_TRANSCRIPTS))
        if (entry.path().extension() == ".txt")
            paths.push_back(entry.path());
    return paths;
}

} // namespace

TEST_P(TranscriptTest, ComesOutAsItStandsThere)
{
    const std::string text = TemporaryFolder::ReadFile(GetParam());
    const std::string replayed = Transcript().Replay(text);
    if (std::getenv("KALVENTO_WRITE_TRANSCRIPTS") != nullptr)
        std::ofstream(GetParam()) << replayed;
    EXPECT_EQ(replayed, text);
}

INSTANTIATE_TEST_SUITE_P(Files, TranscriptTest, testing::ValuesIn(AllTranscripts()),
                         [](const auto& a_info) { return a_info.param.stem().string(); });
