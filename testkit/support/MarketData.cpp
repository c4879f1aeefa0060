#include "support/MarketData.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace MarketData {

std::string Path(const std::string& a_name)
{
    return KALVENTO_MARKET_DATA "/" + a_name;
}

std::string DealtOut(const std::string& a_name, unsigned a_count)
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
