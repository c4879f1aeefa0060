#pragma once

#include "kalvento/ToolContext.h"

#include <chrono>
#include <cstdint>

namespace kalvento::tool {

/// A line on standard error that shows how far long work has come: only on a terminal, not with --quiet, and only
/// for work that takes longer than a moment. Removed when done.
class Progress {
public:
    /// a_total: bytes to go through; 0 where that isn't known.
    Progress(ToolContext& a_context, std::uint64_t a_total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Raises Interrupted after a signal.
    void Show(std::uint64_t a_bytes, std::uint64_t a_rows);

private:
    ToolContext& m_context;
    std::uint64_t m_total;
    bool m_wanted;
    bool m_shown = false;
    std::chrono::steady_clock::time_point m_next;
};

} // namespace kalvento::tool
