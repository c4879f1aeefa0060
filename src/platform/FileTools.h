#pragma once

#include "platform/Export.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

/// Whole files in one go. Safe from any thread; of two writers of one file, one leaves its file.
namespace FileTools {

/// The bytes of a regular file. Empty with a_error set where it can't be read, file_too_large where it holds more than
/// a_mostBytes, not_supported where it isn't a regular file (a pipe would wait for ever).
KALVENTO_API std::optional<std::string> ReadFile(const std::filesystem::path& a_path, std::size_t a_mostBytes,
                                                 std::error_code& a_error);

/// Puts a file of these bytes in place of any that is there, as FileReplacement does with a path of the program's own.
/// True means that the new one is on the disk.
KALVENTO_API bool ReplaceFile(const std::filesystem::path& a_path, std::string_view a_bytes,
                              std::error_code& a_error);

/// Moves what the user made out of the way of a file that is about to be written: from "name" to
/// "name.damaged-YYYYMMDD-HHMMSS" beside it, a_when in local time; "-2", "-3" and so on follow where that is taken.
/// Returns the new path; empty with a_error set, and the file in its place, where it can't be moved. A symbolic link
/// moves itself.
KALVENTO_API std::optional<std::filesystem::path> KeepAside(const std::filesystem::path& a_path,
                                                            std::chrono::system_clock::time_point a_when,
                                                            std::error_code& a_error);

} // namespace FileTools
