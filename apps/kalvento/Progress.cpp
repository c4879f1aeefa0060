#include "kalvento/Progress.h"

#include "platform/Interruption.h"

#include <algorithm>
#include <ostream>
#include <string>

namespace kalvento::tool {

namespace {

constexpr std::chrono::milliseconds S_firstAfter(700);
constexpr std::chrono::milliseconds S_step(150);
constexpr std::size_t S_width = 30;

} // namespace

Progress::Progress(ToolContext& a_context, std::uint64_t a_total)
    : m_context(a_context),
      m_total(a_total),
      m_wanted(a_context.errIsTerminal && !a_context.quiet),
      m_next(std::chrono::steady_clock::now() + S_firstAfter)
{}

Progress::~Progress()
{
    if (m_shown)
        m_context.err << "\r\x1b[K" << std::flush;
}

void Progress::Show(std::uint64_t a_bytes, std::uint64_t a_rows)
{
    m_context.rowsRead = a_rows;
    internal::Interruption::Check();
    if (!m_wanted)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now < m_next)
        return;
    m_next = now + S_step;
    m_shown = true;
    m_context.err << '\r';
    if (m_total > 0) {
        const double share = std::min(1.0, static_cast<double>(a_bytes) / static_cast<double>(m_total));
        const auto filled = static_cast<std::size_t>(share * static_cast<double>(S_width));
        m_context.err << '[' << std::string(filled, '#') << std::string(S_width - filled, ' ') << "] "
                      << static_cast<int>(share * 100.0) << " %  ";
    }
    m_context.err << a_rows << " rows\x1b[K" << std::flush;
}

} // namespace kalvento::tool
