#pragma once

#include "support/Testing.h"
#include "velo/Log.h"

/// Keeps the lines that the log gets while it lives, each as "source: message". Where several threads log, `lines` is to
/// be read when they are done.
class LogWatch {
public:
    LogWatch()
        : m_sink(VeloTools::Log::Instance().AddSink(
              [this](std::string_view a_source, int, std::string_view a_message) {
                  const std::lock_guard lock(m_mutex);
                  lines.push_back(std::string(a_source) + ": " + std::string(a_message));
              }))
    {}
    LogWatch(const LogWatch&) = delete;
    LogWatch& operator=(const LogWatch&) = delete;
    ~LogWatch() { VeloTools::Log::Instance().RemoveSink(m_sink); }

    /// Whether any line holds the text.
    bool Has(std::string_view a_text) const
    {
        return std::ranges::any_of(
            lines, [&](const std::string& a_line) { return a_line.find(a_text) != std::string::npos; });
    }

    std::vector<std::string> lines;

private:
    std::mutex m_mutex;
    VeloTools::Log::SinkId m_sink;
};
