#include "history_operations/HistoryOperations.h"

#include "platform/CodePage.h"
#include "platform/NearestInt.h"
#include "settings/Settings.h"
#include "time/DateTimeTools.h"
#include "velo/Log.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <system_error>

namespace {

constexpr std::string_view S_whiteSpace = " \t\n\v\f\r";

/// The pieces of a text. Separators at its very beginning are skipped; from there on each one ends a piece, which may
/// be empty; what follows the last one is a piece unless it is empty.
class Pieces {
public:
    Pieces(std::string_view a_text, char a_separator) : m_rest(a_text), m_separator(a_separator)
    {
        m_rest.remove_prefix(std::min(m_rest.find_first_not_of(a_separator), m_rest.size()));
    }

    /// False where there are no more.
    bool Next(std::string_view& a_piece)
    {
        if (m_rest.empty())
            return false;
        const std::size_t length = std::min(m_rest.find(m_separator), m_rest.size());
        a_piece = m_rest.substr(0, length);
        m_rest.remove_prefix(std::min(length + 1, m_rest.size()));
        return true;
    }

private:
    std::string_view m_rest;
    char m_separator;
};

// Zero where there is no number in front, or one out of range. a_isWhole: the text is that number and nothing else.
template<class Number>
Number ReadNumber(std::string_view a_text, bool& a_isWhole)
{
    Number number{};
    const char* const end = a_text.data() + a_text.size();
    const auto result = std::from_chars(a_text.data(), end, number);
    a_isWhole = result.ec == std::errc() && result.ptr == end;
    return result.ec == std::errc() ? number : Number{};
}

// atoi, a plus sign included; what passes 32 bits is the nearest limit.
int ReadVersion(const std::string& a_text)
{
    return kalvento::internal::NearestInt(std::int64_t{std::strtoll(a_text.c_str(), nullptr, 10)});
}

bool IsWhiteSpace(char a_sign)
{
    // The classic white space by its characters: isspace would ask the locale.
    return S_whiteSpace.find(a_sign) != std::string_view::npos;
}

// Where the sign stands in a line that is the a_place-th of those that aren't white space.
std::size_t ColumnOf(std::string_view a_line, std::size_t a_place)
{
    std::size_t column = 0;
    while (column < a_line.size() && (IsWhiteSpace(a_line[column]) || a_place-- > 0))
        ++column;
    return column + 1;
}

void WriteLog(std::string_view a_source, int a_line, std::string a_message, std::string_view a_text)
{
    VeloTools::Log::Instance().Write(a_source, a_line, a_message.append(a_text));
}

} // namespace

HistoryOperations::HistoryOperations(const Settings& a_settings)
{
    Unserialize(a_settings);
}

bool HistoryOperations::Parse(std::string_view a_text)
{
    std::vector<OperationsFault> faults;
    return Parse(a_text, faults);
}

bool HistoryOperations::Parse(std::string_view a_text, std::vector<OperationsFault>& a_faults)
{
    *this = HistoryOperations();
    Pieces lines(a_text, '\n');
    std::string_view line;
    if (!lines.Next(line)) {
        WriteLog("HistoryOperations::Parse", __LINE__,
                 "Odebrany plik historii operacji nie zawiera minimalnej liczby wierszy"_cp1250, {});
        a_faults.emplace_back();
        return false;
    }
    // Only line ends may stand before the first line.
    auto number = static_cast<std::size_t>(line.data() - a_text.data()) + 1;
    std::string text(line);
    RemoveWhiteSpace(text);
    m_version = ReadVersion(text);
    bool isWhole = false;
    ReadNumber<int>(text, isWhole);
    if (!isWhole)
        a_faults.push_back({EOperationsVersion, number, ColumnOf(line, 0), text});

    while (lines.Next(line)) {
        if (!ParseLine(line, ++number, a_faults)) {
            *this = HistoryOperations();
            return false;
        }
    }
    return true;
}

void HistoryOperations::RemoveWhiteSpace(std::string& a_line)
{
    std::erase_if(a_line, IsWhiteSpace);
}

bool HistoryOperations::ParseLine(std::string_view a_line, std::size_t a_number,
                                  std::vector<OperationsFault>& a_faults)
{
    constexpr std::array parts = {EOperationsIdentifier, EOperationsDate, EOperationsType, EOperationsFactor};

    std::string line(a_line);
    RemoveWhiteSpace(line);
    if (line.empty())
        return true;

    Pieces pieces(line, ',');
    std::array<std::string_view, parts.size()> fields;
    for (std::string_view& field : fields) {
        if (!pieces.Next(field)) {
            WriteLog("HistoryOperations::ParseLine", __LINE__, "Nie można sparsować operacji: "_cp1250, line);
            a_faults.push_back({EOperationsOperation, a_number, 1, line});
            return false;
        }
    }
    const auto date = DateTimeTools::ParseDateYYMMDD(fields[1]);
    if (!date) {
        WriteLog("HistoryOperations::ParseLine", __LINE__, "Nie można sparsować daty operacji: "_cp1250,
                 fields[1]);
        a_faults.push_back({EOperationsOperation, a_number, 1, line});
        return false;
    }
    std::array<bool, parts.size()> areWhole{};
    ReadNumber<std::uint32_t>(fields[1], areWhole[1]);
    m_operations.emplace_back(
        ReadNumber<int>(fields[0], areWhole[0]), *date,
        static_cast<SingleHistoryOperation::Type>(ReadNumber<int>(fields[2], areWhole[2])),
        ReadNumber<double>(fields[3], areWhole[3]));
    for (std::size_t place = 0; place < fields.size(); ++place) {
        const auto begin = static_cast<std::size_t>(fields[place].data() - line.data());
        if (!areWhole[place])
            a_faults.push_back({parts[place], a_number, ColumnOf(a_line, begin), std::string(fields[place])});
    }
    return true;
}

bool HistoryOperations::Load(const std::wstring& a_path)
{
    Settings settings;
    if (!settings.LoadFromFile(a_path, XML_ROOT))
        return false;
    *this = HistoryOperations(settings);
    return true;
}

void HistoryOperations::Save(const std::wstring& a_path) const
{
    Settings settings;
    SerializeState(settings);
    settings.SaveToFile(a_path, XML_ROOT);
}

void HistoryOperations::SerializeState(Settings& a_settings) const
{
    a_settings[XML_VERSION] = m_version;
    Settings& operations = a_settings[XML_OPERATIONS];
    for (const SingleHistoryOperation& operation : m_operations)
        operation.SerializeState(operations.AddUnnamed());
}

void HistoryOperations::Unserialize(const Settings& a_settings)
{
    m_version = a_settings[XML_VERSION];
    const Settings& operations = a_settings[XML_OPERATIONS];
    m_operations.reserve(operations.GetUnnamedVariablesCount());
    for (auto node = operations.begin_unnamed(); node != operations.end_unnamed(); ++node)
        m_operations.emplace_back(*node);
}

bool HistoryOperations::CanBeUse(const NDateTime& a_date) const
{
    return std::all_of(begin(), end(), [&](const SingleHistoryOperation& a_operation) {
        return a_operation.GetDate() < a_date;
    });
}

HistoryOperations HistoryOperations::PrapareOperationThatCanBeUse(const NDateTime& a_date) const
{
    HistoryOperations usable;
    // In unsigned arithmetic, since the lowest number has no opposite and stays as it is.
    usable.m_version = static_cast<int>(0U - static_cast<unsigned int>(m_version));
    std::copy_if(begin(), end(), std::back_inserter(usable.m_operations),
                 [&](const SingleHistoryOperation& a_operation) { return a_operation.GetDate() < a_date; });
    return usable;
}
