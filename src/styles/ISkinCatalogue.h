#pragma once

#include "platform/Export.h"

#include <string>
#include <vector>

class ModuleWndBase;

/// All skins and the current one, as StylesManager keeps them. A skin's styles come from windows, so the catalogue itself
/// belongs to the window library, which puts it into the manager at its start.
///
/// Everything is called under the manager's lock: don't call back into what locks there. Names are compared exactly.
class KALVENTO_API ISkinCatalogue {
public:
    virtual ~ISkinCatalogue();

    /// Appends the skins found below the folder of styles, which is there. True where the catalogue holds one then.
    virtual bool Load() = 0;
    virtual bool Exists(const std::wstring& a_name) const = 0;
    /// Appends a skin with the styles of these windows, one window a module. The current skin stays the same one.
    virtual bool AddStyle(const std::wstring& a_name, const std::vector<ModuleWndBase*>& a_windows) = 0;
    /// Drops the skin, not its files. False where there is none of that name. Not to be called for the current one.
    virtual bool Delete(const std::wstring& a_name) = 0;
    /// Saves the skins in order and stops at the first that fails.
    virtual bool Save() const = 0;
    /// Nothing where that skin is the current one; else it becomes that (the first one where there is none of the name),
    /// and the modules get its styles.
    virtual void SetCurrent(const std::wstring& a_name) = 0;
    /// File names of the current skin. To be called once there is one. The references are valid until a skin is added or
    /// deleted.
    virtual const std::wstring& GetCurrentStyleFile() const = 0;
    virtual const std::wstring& GetCurrentStyleIni() const = 0;
};
