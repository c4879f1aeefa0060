#pragma once

#include "kalvento/Tool.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

/// What a run of the tool left behind.
struct ToolRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

/// Runs the whole tool in this process.
inline ToolRun RunToolHere(const std::vector<std::string>& a_arguments, const std::string& a_input = {})
{
    std::istringstream in(a_input);
    std::ostringstream out;
    std::ostringstream err;
    kalvento::tool::ToolContext context{in, out, err};
    ToolRun run;
    run.exitCode = kalvento::tool::RunTool(a_arguments, context);
    run.out = out.str();
    run.err = err.str();
    return run;
}

/// A folder that is gone with the test.
class TestFolder {
public:
    TestFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "kalvento-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    ~TestFolder() { std::filesystem::remove_all(m_path); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string Path(const std::string& a_name) const { return m_path + '/' + a_name; }
    std::string Write(const std::string& a_name, const std::string& a_bytes) const
    {
        std::ofstream(Path(a_name), std::ios::binary) << a_bytes;
        return Path(a_name);
    }
    void Append(const std::string& a_name, const std::string& a_bytes) const
    {
        std::ofstream(Path(a_name), std::ios::binary | std::ios::app) << a_bytes;
    }
    std::string Read(const std::string& a_name) const { return ReadFile(Path(a_name)); }
    static std::string ReadFile(const std::string& a_path)
    {
        std::ifstream file(a_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    std::size_t CountFiles() const
    {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_path))
            ++count;
        return count;
    }

private:
    std::string m_path;
};
