#pragma once

#include "settings/Settings.h"

#include <filesystem>
#include <set>
#include <string>

class IGenericModule;

namespace kalvento::host {

/// The state of the modules from one run to the next, in one file of the user's. What belongs to a module that doesn't
/// run stays in it; what can't be read is kept aside before anything is written over it. Main thread only.
class ModuleStates {
public:
    /// Reads the file, if there is one. a_file: an XML file of Settings; docs/plugins.md shows its form.
    explicit ModuleStates(std::filesystem::path a_file);

    /// UnserialiseState with what was kept for the module, converted by the module where an older version wrote it. The
    /// state of a newer one is left alone: neither given back nor overwritten. Lets through what the module raises; its
    /// state is kept aside then before the file is written.
    void GiveBack(IGenericModule& a_module);
    /// SerialiseState. Lets through what the module raises: then the state of before stays.
    void Take(const IGenericModule& a_module);
    /// Writes the file where something has changed. False, with a line in the log, where that can't be.
    bool Save();
    /// For the user, Polish: what became of a file that can't be read. Empty where all is well.
    const std::wstring& GetNotice() const { return m_notice; }

private:
    static constexpr int S_version = 1; // of the file's form

    const Settings* Find(const std::wstring& a_module) const;
    bool KeepAside();

    const std::filesystem::path m_file;
    Settings m_root;
    std::string m_saved;           // as the file has it
    std::set<std::wstring> m_left; // modules whose state is of a newer version
    bool m_isNewer = false;        // the whole file is of a newer form: it is left alone
    bool m_mustKeepAside = false;
    std::wstring m_notice;
};

} // namespace kalvento::host
