#pragma once

namespace CLI {
class App;
}

namespace kalvento::tool {

struct ReadOptions;

/// Adds the options that fill a ReadOptions, which must outlive the parse.
void AddReadOptions(CLI::App& a_command, ReadOptions& a_options);

} // namespace kalvento::tool
