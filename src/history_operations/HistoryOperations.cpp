#include "history_operations/HistoryOperations.h"

#include "platform/CodePage.h"
#include "settings/Settings.h"
#include "time/DateTimeTools.h"
#include "velo/Log.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
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

// Zero where there is no number in front, or one out of range.
template<class Number>
Number ReadNumber(std::string_view a_text)
{
    Number number{};
    const auto result = std::from_chars(a_text.data(), a_text.data() + a_text.size(), number);
    return result.ec == std::errc() ? number : Number{};
}

// atoi, a plus sign included; what passes 32 bits is the nearest limit.
int ReadVersion(const std::string& a_text)
{
    const long long number = std::strtoll(a_text.c_str(), nullptr, 10);
    return static_cast<int>(
        std::clamp<long long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
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
    *this = HistoryOperations();
    Pieces lines(a_text, '\n');
    std::string_view line;
    if (!lines.Next(line)) {
        WriteLog("HistoryOperations::Parse", __LINE__,
                 "Odebrany plik historii operacji nie zawiera minimalnej liczby wierszy"_cp1250, {});
        return false;
    }
    std::string text(line);
    RemoveWhiteSpace(text);
    m_version = ReadVersion(text);

    while (lines.Next(line)) {
        text = line;
        if (!ParseLine(text)) {
            *this = HistoryOperations();
            return false;
        }
    }
    return true;
}

void HistoryOperations::RemoveWhiteSpace(std::string& a_line)
{
    // The classic white space by its characters: isspace would ask the locale.
    std::erase_if(a_line, [](char a_sign) { return S_whiteSpace.find(a_sign) != std::string_view::npos; });
}

bool HistoryOperations::ParseLine(std::string& a_line)
{
    constexpr std::size_t fieldsCount = 4;

    RemoveWhiteSpace(a_line);
    if (a_line.empty())
        return true;

    Pieces pieces(a_line, ',');
    std::string_view fields[fieldsCount];
    for (std::string_view& field : fields) {
        if (!pieces.Next(field)) {
            WriteLog("HistoryOperations::ParseLine", __LINE__, "Nie można sparsować operacji: "_cp1250,
                     a_line);
            return false;
        }
    }
    const auto date = DateTimeTools::ParseDateYYMMDD(fields[1]);
    if (!date) {
        WriteLog("HistoryOperations::ParseLine", __LINE__, "Nie można sparsować daty operacji: "_cp1250,
                 fields[1]);
        return false;
    }
    m_operations.emplace_back(ReadNumber<int>(fields[0]), *date,
                              static_cast<SingleHistoryOperation::Type>(ReadNumber<int>(fields[2])),
                              ReadNumber<double>(fields[3]));
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

void HistoryOperations::Update(const HistoryOperations& a_other)
{
    *this = a_other;
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
