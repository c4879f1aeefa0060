#pragma once

#include "settings/Settings.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kalvento::internal {

/// The XML form of a tree, in files and in texts; docs/settings.md describes it.
class SettingsForm {
public:
    enum ELayout : std::uint8_t {
        ELayoutFile,     // UTF-8, indented, one value to a line
        ELayoutAsciiLine // ASCII without a line end
    };
    struct Written {
        std::string text;
        std::string problem; // CP1250; empty on success
    };

    // What is accepted from outside. Real files are a thousand times smaller; a hostile one must not take the memory.
    static constexpr std::size_t S_mostBytes = std::size_t{64} * 1024 * 1024;
    static constexpr std::size_t S_mostNodes = 2000000;
    static constexpr std::size_t S_mostLevels = 1000;

    static Written Write(const Settings& a_tree, std::string_view a_rootName, ELayout a_layout);
    /// Fills the empty node a_tree. Gives what is wrong with the text and where (CP1250), empty where nothing is;
    /// otherwise a_tree holds a part of the text.
    static std::string Read(std::string_view a_text, std::string_view a_rootName, Settings& a_tree);
    /// A child that AddUnnamed made, to be filled. a_place must lie below the count.
    static Settings& UnnamedOf(Settings& a_node, std::size_t a_place);
};

} // namespace kalvento::internal
