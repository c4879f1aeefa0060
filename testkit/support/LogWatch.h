#pragma once

#include "support/Testing.h"
#include "velo/Log.h"

/// Keeps the lines that the log gets while it lives, each as "source: message". One thread.
class LogWatch {
public:
    LogWatch()
        : m_sink(VeloTools::Log::Instance().AddSink(
              [this](std::string_view a_source, int, std::string_view a_message) {
                  lines.push_back(std::string(a_source) + ": " + std::string(a_message));
              }))
    {}
    LogWatch(const LogWatch&) = delete;
    LogWatch& operator=(const LogWatch&) = delete;
    ~LogWatch() { VeloTools::Log::Instance().RemoveSink(m_sink); }

    std::vector<std::string> lines;

private:
    VeloTools::Log::SinkId m_sink;
};
