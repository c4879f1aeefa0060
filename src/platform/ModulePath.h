#pragma once

#include "platform/Export.h"
#include "platform/Handles.h"

#include <filesystem>

/// Where the files of the running process lie.
namespace ModulePath {

/// File of a module, of the main executable for null; empty where the address belongs to no module.
KALVENTO_API std::filesystem::path GetFile(HINSTANCE a_module);

} // namespace ModulePath
