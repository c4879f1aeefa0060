#include "kalvento/OperationsFile.h"

#include "kalvento/Note.h"
#include "kalvento/OpenInput.h"
#include "kalvento/TextForms.h"
#include "kalvento/ToolContext.h"
#include "platform/CodePage.h"
#include "settings/Settings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <ostream>
#include <set>

namespace kalvento::tool {

namespace {

// Far more operations than any instrument has; a longer file is of another kind.
constexpr std::size_t S_mostBytes = std::size_t{64} << 20U;
constexpr std::string_view S_whiteSpace = " \t\n\v\f\r";

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

/// What the fields are called, in the order of EOperationsPart, and what belongs in them.
constexpr std::string_view S_whole = "a whole number of 32 bits";
constexpr std::array<std::pair<std::string_view, std::string_view>, 7> S_parts = {
    {{},
     {"version", S_whole},
     {},
     {"identifier", S_whole},
     {"date", "six digits, YYMMDD"},
     {"type", S_whole},
     {"factor", "a number with a decimal point"}}};

void ParseText(std::string_view a_text, OperationsFile& a_file)
{
    if (a_text.find_first_not_of('\n') == std::string_view::npos)
        throw ToolError(EExitBadData, a_file.name +
                                          ": holds no line; expected the version of the list, and behind it "
                                          "lines id,date,type,factor");
    std::vector<OperationsFault> faults;
    if (!a_file.list.Parse(a_text, faults)) {
        const OperationsFault& fault = faults.back();
        throw ToolError(EExitBadData,
                        fmt::format("{}:{}:{}: found \"{}\", expected id,date,type,factor with a "
                                    "date of six digits, YYMMDD",
                                    a_file.name, fault.line, fault.column, fault.found));
    }
    for (const OperationsFault& fault : faults) {
        const auto& [name, expected] = S_parts.at(fault.expected);
        a_file.oddities.push_back(
            fmt::format("line {}: {} \"{}\", expected {}", fault.line, name, fault.found, expected));
    }
}

void LoadXml(const std::string& a_text, OperationsFile& a_file)
{
    Settings tree;
    const std::string problem = tree.LoadFromBytes(
        a_text, CodePage::WideToCp1250(CodePage::Utf8ToWide(a_file.name)), HistoryOperations::XML_ROOT);
    if (!problem.empty())
        throw ToolError(EExitBadData, a_file.name +
                                          ": expected an XML file with the root \"DataOperation\"; " +
                                          CodePage::Cp1250ToUtf8(problem));
    a_file.list = HistoryOperations(tree);
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

HistoryOperations ReadOperationsForRows(const std::string& a_path, ToolContext& a_context)
{
    OperationsFile file = ReadOperationsFile(a_path, a_context);
    if (!a_context.quiet) {
        for (const std::string& oddity : file.oddities)
            Note(a_context, file.name + ": " + oddity);
    }
    return std::move(file.list);
}

std::string OperationsXml(const HistoryOperations& a_operations)
{
    Settings tree;
    a_operations.SerializeState(tree);
    std::string bytes = tree.SaveToBytes(HistoryOperations::XML_ROOT);
    if (bytes.empty())
        throw ToolError(EExitFailure, "the list is too long for its XML form");
    return bytes;
}

} // namespace kalvento::tool
