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

/// File of this library; that of the executable where the library is a part of it.
KALVENTO_API std::filesystem::path GetLibrary();

/// From now on that file is the main executable for GetFile: for a program that tries something in another's stead.
/// Once, before there is another thread.
KALVENTO_API void SetProgram(std::filesystem::path a_file);

} // namespace ModulePath
