#pragma once

#include "platform/Export.h"
#include "platform/Handles.h"

#include <filesystem>

/// Where the files of the running process lie.
namespace ModulePath {

/// File of a module, of the main executable for null; empty where the address belongs to no module.
KALVENTO_API std::filesystem::path GetFile(HINSTANCE a_module);

/// The address at which a module begins, that of the main executable for null: the same for every address inside it. Null
/// where the address belongs to no module.
KALVENTO_API const void* GetBase(HINSTANCE a_module);

} // namespace ModulePath
