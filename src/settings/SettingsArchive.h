#pragma once

#include "platform/CArchive.h"
#include "platform/Export.h"
#include "settings/Settings.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// Texts, and values that are stored as trees, inside an archive. docs/alerts_and_orders.md shows the bytes.
namespace SettingsArchive {

/// 8 bytes with the length, then the bytes, without a terminator.
KALVENTO_API void WriteText(CArchive& a_archive, std::string_view a_text);
/// Raises CArchiveException, before anything is allocated, for a length beyond the rest of the archive.
KALVENTO_API std::string ReadText(CArchive& a_archive);

/// One byte, 1, and the tree's text; or the byte 0 for null. An archive that loads raises std::runtime_error. So does a
/// tree beyond the limits of Settings::ConvertToString, which nobody could read back.
KALVENTO_API void WriteOptionalTree(CArchive& a_archive, const Settings* a_tree);
/// Empty after the byte 0. An archive that stores, and a text that is no tree, raise std::runtime_error; any byte but 0
/// and 1 raises CArchiveException.
KALVENTO_API std::optional<Settings> ReadOptionalTree(CArchive& a_archive);

/// A value that may be absent, by its SerializeState.
template<class Value>
void WriteOptional(CArchive& a_archive, const std::optional<Value>& a_value)
{
    if (!a_value) {
        WriteOptionalTree(a_archive, nullptr);
        return;
    }
    Settings tree;
    a_value->SerializeState(tree);
    WriteOptionalTree(a_archive, &tree);
}

/// By the value's constructor from Settings, whose exceptions come through.
template<class Value>
std::optional<Value> ReadOptional(CArchive& a_archive)
{
    const std::optional<Settings> tree = ReadOptionalTree(a_archive);
    if (!tree)
        return std::nullopt;
    return std::optional<Value>(std::in_place, *tree);
}

} // namespace SettingsArchive
