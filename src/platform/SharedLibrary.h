#pragma once

#include "platform/Export.h"

#include <filesystem>
#include <string>

namespace kalvento::internal {

/// A shared library loaded at run time. It stays loaded until Unload is called: a destructor can't know whether a
/// thread still runs in it.
class KALVENTO_API SharedLibrary {
public:
    /// Loads the file with all that it needs; its symbols don't serve other libraries. Empty when done, else the
    /// loader's own text, which begins with the name of what it couldn't use.
    std::string Load(const std::filesystem::path& a_path);
    /// nullptr where it has none of that name.
    void* Find(const char* a_symbol) const;
    /// Nothing of the library may be used from now on. Does nothing where none is loaded.
    void Unload();

private:
    void* m_handle = nullptr;
};

} // namespace kalvento::internal
