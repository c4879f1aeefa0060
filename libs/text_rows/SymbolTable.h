#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kalvento::rows {

/// The symbols of a text in the order of their first row. Symbols come in runs, so the last one is looked at first.
class SymbolTable {
public:
    /// Place of the symbol, which is added if it is new.
    std::uint32_t FindOrAdd(std::string_view a_symbol)
    {
        if (!m_symbols.empty() && m_symbols[m_last] == a_symbol)
            return m_last;
        const auto [found, added] =
            m_places.try_emplace(std::string(a_symbol), static_cast<std::uint32_t>(m_symbols.size()));
        if (added)
            m_symbols.emplace_back(a_symbol);
        return m_last = found->second;
    }
    const std::vector<std::string>& GetSymbols() const { return m_symbols; }

private:
    std::vector<std::string> m_symbols;
    std::unordered_map<std::string, std::uint32_t> m_places;
    std::uint32_t m_last = 0;
};

} // namespace kalvento::rows
