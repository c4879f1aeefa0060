#include "kalvento/OperationsFile.h"

#include "kalvento/LogCollector.h"
#include "kalvento/OpenInput.h"
#include "kalvento/TextForms.h"
#include "platform/FileTools.h"
#include "platform/WidePath.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <set>
#include <system_error>

namespace kalvento::tool {

namespace {

// Far more than any instrument goes through; what is longer is another kind of file.
constexpr std::size_t S_mostBytes = std::size_t{64} << 20U;
constexpr std::string_view S_whiteSpace = " \t\n\v\f\r";

/// The library knows the XML form as a file only: a folder that is gone with the object holds it meanwhile.
class PassingFile {
public:
    PassingFile()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "kalvento-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw ToolError(EExitFailure,
                            "no folder can be made in " + std::filesystem::temp_directory_path().string());
        m_folder = pattern;
    }
    ~PassingFile()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;

    std::filesystem::path GetPath() const { return m_folder / "DataOperation.xml"; }

private:
    std::filesystem::path m_folder;
};

std::string ReadAll(ByteSource& a_source)
{
    std::string bytes;
    std::size_t filled = 0;
    for (;;) {
        bytes.resize(std::max<std::size_t>(2 * filled, 1 << 16));
        const std::size_t got = a_source.Read(bytes.data() + filled, bytes.size() - filled);
        filled += got;
        if (filled > S_mostBytes)
            throw ToolError(EExitBadData, a_source.GetName() + ": is longer than 64 MiB; expected a list of "
                                                               "corporate operations");
        if (got == 0)
            break;
    }
    bytes.resize(filled);
    return bytes;
}

/// One line of a text, as the library sees it: without white space.
struct Line {
    std::size_t number; // from 1
    std::string text;
};

std::vector<Line> LinesOf(std::string_view a_text)
{
    std::vector<Line> lines;
    for (std::size_t number = 1; !a_text.empty(); ++number) {
        const std::size_t length = std::min(a_text.find('\n'), a_text.size());
        std::string text(a_text.substr(0, length));
        a_text.remove_prefix(std::min(length + 1, a_text.size()));
        const bool isVersion = lines.empty() && length > 0;
        std::erase_if(text, [](char a_sign) { return S_whiteSpace.find(a_sign) != std::string_view::npos; });
        if (!text.empty() || isVersion)
            lines.push_back({number, std::move(text)});
    }
    return lines;
}

std::string PlaceOf(const Line& a_line)
{
    return "line " + std::to_string(a_line.number);
}

template<class Number>
bool IsNumber(std::string_view a_text)
{
    Number number{};
    const auto [end, error] = std::from_chars(a_text.data(), a_text.data() + a_text.size(), number);
    return error == std::errc() && end == a_text.data() + a_text.size();
}

void FindUnreadable(const Line& a_line, std::vector<std::string>& a_oddities)
{
    std::vector<std::string> fields;
    std::string_view rest = a_line.text;
    rest.remove_prefix(std::min(rest.find_first_not_of(','), rest.size())); // as the library does
    while (fields.size() < 4) {
        const std::size_t length = std::min(rest.find(','), rest.size());
        fields.emplace_back(rest.substr(0, length));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    const auto add = [&](const char* a_name, const std::string& a_field, const char* a_expected) {
        a_oddities.push_back(PlaceOf(a_line) + ": " + a_name + " \"" + a_field + "\", expected " +
                             a_expected);
    };
    if (!IsNumber<std::int32_t>(fields[0]))
        add("identifier", fields[0], "a whole number of 32 bits");
    if (!IsNumber<std::uint32_t>(fields[1]))
        add("date", fields[1], "six digits, YYMMDD");
    if (!IsNumber<std::int32_t>(fields[2]))
        add("type", fields[2], "a whole number of 32 bits");
    if (!IsNumber<double>(fields[3]))
        add("factor", fields[3], "a number with a decimal point");
}

// The first line that alone would be refused says where a whole text is.
void ParseText(std::string_view a_text, OperationsFile& a_file)
{
    const std::vector<Line> lines = LinesOf(a_text);
    if (lines.empty())
        throw ToolError(EExitBadData, a_file.name +
                                          ": holds no line; expected the version of the list, and behind it "
                                          "lines id,date,type,factor");
    if (!IsNumber<std::int32_t>(lines[0].text))
        a_file.oddities.push_back(PlaceOf(lines[0]) + ": version \"" + lines[0].text +
                                  "\", expected a whole number of 32 bits");
    for (std::size_t place = 1; place < lines.size(); ++place) {
        HistoryOperations alone;
        if (!alone.Parse("0\n" + lines[place].text))
            throw ToolError(EExitBadData,
                            a_file.name + ":" + std::to_string(lines[place].number) + ":1: found \"" +
                                lines[place].text +
                                "\", expected id,date,type,factor with a date of six digits, YYMMDD");
        FindUnreadable(lines[place], a_file.oddities);
    }
    if (!a_file.list.Parse(a_text))
        throw ToolError(EExitBadData, a_file.name + ": is no list of corporate operations");
}

void LoadXml(const std::string& a_text, OperationsFile& a_file)
{
    const PassingFile passing;
    std::error_code error;
    if (!FileTools::ReplaceFile(passing.GetPath(), a_text, error))
        throw ToolError(EExitFailure, passing.GetPath().string() + ": can't be written: " + error.message());
    const LogCollector log;
    if (a_file.list.Load(WidePath::ToWide(passing.GetPath())))
        return;
    // The library names the file that it read, which is none of the user's: what stands behind its name is the reason.
    const std::string name = passing.GetPath().string() + ": ";
    const std::size_t found = log.GetText().find(name);
    throw ToolError(
        EExitBadData,
        a_file.name + ": expected an XML file with the root \"DataOperation\"; " +
            (found == std::string::npos ? log.GetText() : log.GetText().substr(found + name.size())));
}

void FindOddities(OperationsFile& a_file)
{
    std::set<int> identifiers;
    std::size_t number = 0;
    for (const SingleHistoryOperation& operation : a_file.list) {
        const auto add = [&](const std::string& a_what) {
            a_file.oddities.push_back("operation " + std::to_string(number) + ": " + a_what);
        };
        ++number;
        if (!operation.GetDate().IsValid())
            add("its date is in no calendar, so it changes nothing");
        const double factor = operation.GetFactor();
        if (!std::isfinite(factor) || factor <= 0.0)
            add("factor " + FormatNumber(operation.GetStoredFactor()) + ", expected one above 0");
        if (!identifiers.insert(operation.GetId()).second)
            add("identifier " + std::to_string(operation.GetId()) + " was given before");
    }
}

} // namespace

OperationsFile ReadOperationsFile(const std::string& a_path, ToolContext& a_context)
{
    const auto source = OpenInput(a_path, a_context);
    OperationsFile file;
    file.name = source->GetName();
    std::string text = ReadAll(*source);
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const std::size_t begin = text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    const std::size_t first = text.find_first_not_of(S_whiteSpace, begin);
    file.isXml = first != std::string::npos && text[first] == '<';
    if (file.isXml)
        LoadXml(text, file);
    else
        ParseText(std::string_view(text).substr(begin), file);
    FindOddities(file);
    return file;
}

HistoryOperations ReadOperationsForRows(const std::string& a_path, std::string_view a_symbolColumn,
                                        ToolContext& a_context)
{
    if (!a_symbolColumn.empty())
        throw ToolError(EExitUsage,
                        "--operations: a list is that of one instrument; leave --symbol-column out");
    OperationsFile file = ReadOperationsFile(a_path, a_context);
    if (!a_context.quiet) {
        for (const std::string& oddity : file.oddities)
            a_context.err << "kalvento: " << file.name << ": " << oddity << '\n';
    }
    return std::move(file.list);
}

std::string OperationsXml(const HistoryOperations& a_operations)
{
    const PassingFile passing;
    a_operations.Save(WidePath::ToWide(passing.GetPath()));
    std::error_code error;
    auto bytes = FileTools::ReadFile(passing.GetPath(), S_mostBytes, error);
    if (!bytes)
        throw ToolError(EExitFailure, passing.GetPath().string() + ": can't be written");
    return *std::move(bytes);
}

} // namespace kalvento::tool
