#pragma once

#include "history_operations/OperationsFault.h"
#include "history_operations/SingleHistoryOperation.h"
#include "platform/Export.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class Settings;

/// The list of corporate operations of one instrument, with which History::ApplyDataOperations puts past prices on the
/// scale of the present. docs/history_operations.md describes both file forms: the text of a data source, which Parse
/// takes, and the XML file beside the instrument's history. A plain value; one thread at a time.
///
/// A provider receives the text, calls Parse, and Save with the path of HistoryPathManager::GetOperationFilePath; at a
/// later start it calls Load. Consumers get a copy, or what PrapareOperationThatCanBeUse gives.
class KALVENTO_API HistoryOperations {
public:
    using const_iterator = std::vector<SingleHistoryOperation>::const_iterator;

    /// Root name of the XML form.
    static constexpr std::string_view XML_ROOT = "DataOperation";
    static constexpr std::string_view XML_VERSION = "Version";
    static constexpr std::string_view XML_OPERATIONS = "Operations";

    /// Version 0, no operations.
    HistoryOperations() = default;
    /// Reads what SerializeState wrote.
    explicit HistoryOperations(const Settings& a_settings);

    /// Version of the list at the data source; 0 for an empty object, negative for a list cut for a date.
    int Version() const { return m_version; }
    // In the order of the file, whatever the dates.
    const_iterator begin() const { return m_operations.begin(); }
    const_iterator end() const { return m_operations.end(); }

    /// Takes the whole text of a data source. False, with a line in the log and this object empty, where it holds no
    /// line, a line of fewer than four fields, or a date that can't be read: a file is taken whole or not at all. An
    /// identifier, type or factor that can't be read is 0 and no failure: the data source must get those right.
    bool Parse(std::string_view a_text);
    /// The same, telling in a_faults what was refused (then it is the last one) and what was taken as 0, in whole or from
    /// the first sign that is no digit of it on.
    bool Parse(std::string_view a_text, std::vector<OperationsFault>& a_faults);

    /// Takes the list of an XML file. False, with this object unchanged, where there is no such file or it can't be
    /// read.
    bool Load(const std::wstring& a_path);
    /// Writes the XML file. A failure shows in the log only.
    void Save(const std::wstring& a_path) const;
    void SerializeState(Settings& a_settings) const;

    /// Takes over version and list.
    void Update(const HistoryOperations& a_other) { *this = a_other; }

    /// True where every operation is dated earlier than a_date, so that PrapareOperationThatCanBeUse would drop
    /// nothing.
    bool CanBeUse(const NDateTime& a_date) const;
    /// The operations dated earlier than a_date, in their order, under the negated version.
    HistoryOperations PrapareOperationThatCanBeUse(const NDateTime& a_date) const;

private:
    void Unserialize(const Settings& a_settings);
    static void RemoveWhiteSpace(std::string& a_line);
    bool ParseLine(std::string_view a_line, std::size_t a_number, std::vector<OperationsFault>& a_faults);

    int m_version = 0;
    std::vector<SingleHistoryOperation> m_operations;
};
