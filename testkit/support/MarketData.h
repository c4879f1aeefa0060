#pragma once

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

/// The real market data that come with the sources; examples/market/README.md tells what each file holds.
namespace MarketData {

inline std::string Path(const std::string& a_name)
{
    return KALVENTO_MARKET_DATA "/" + a_name;
}

/// The rows of a file as if they were those of a_count instruments, S1, S2 and so on, which traded in turn.
inline std::string DealtOut(const std::string& a_name, unsigned a_count)
{
    std::ifstream file(Path(a_name), std::ios::binary);
    std::ostringstream dealt;
    std::string line;
    for (unsigned row = 0; std::getline(file, line); ++row)
        dealt << (row == 0 ? "symbol" : "S" + std::to_string(1 + row % a_count)) << ',' << line << '\n';
    if (dealt.str().empty())
        throw std::runtime_error("No rows in " + Path(a_name));
    return dealt.str();
}

} // namespace MarketData
