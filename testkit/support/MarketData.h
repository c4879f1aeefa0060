#pragma once

#include <string>

/// The real market data that come with the sources; examples/market/README.md says what each file holds.
namespace MarketData {

std::string Path(const std::string& a_name);

/// The rows of a file as if they were those of a_count instruments, S1, S2 and so on, which traded in turn.
std::string DealtOut(const std::string& a_name, unsigned a_count);

} // namespace MarketData
