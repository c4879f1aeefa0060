#pragma once

#include "platform/CodePage.h"
#include "velo/Log.h"

#include <string>
#include <string_view>

namespace kalvento::tool {

/// While it lives, collects what the library writes to the log, in UTF-8. One thread at a time.
class LogCollector {
public:
    LogCollector()
        : m_sink(
              VeloTools::Log::Instance().AddSink([this](std::string_view, int, std::string_view a_message) {
                  m_text += (m_text.empty() ? "" : "; ") + CodePage::Cp1250ToUtf8(a_message);
              }))
    {}
    ~LogCollector() { VeloTools::Log::Instance().RemoveSink(m_sink); }
    LogCollector(const LogCollector&) = delete;
    LogCollector& operator=(const LogCollector&) = delete;

    const std::string& GetText() const { return m_text; }

private:
    std::string m_text;
    VeloTools::Log::SinkId m_sink;
};

} // namespace kalvento::tool
