#pragma once

#include "platform/Export.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string_view>

namespace VeloTools {

/// The one logger of the process. Safe from any thread, also while static objects are built and destroyed.
/// Until a log folder is known, lines go to standard error; from then on to a rotating UTF-8 file in that folder.
class KALVENTO_API Log {
public:
    /// Receives every line: source and message as given (CP1250), and the source line.
    using Sink = std::function<void(std::string_view a_source, int a_line, std::string_view a_message)>;

    static Log& Instance();

    /// a_source: qualified name of the calling function; a_line: its source line; a_message: Polish text in CP1250.
    /// Never throws.
    void Write(std::string_view a_source, int a_line, std::string_view a_message) noexcept;

    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

private:
    Log();
    ~Log();
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace VeloTools
