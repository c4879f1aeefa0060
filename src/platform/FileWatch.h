#pragma once

#include "platform/Export.h"
#include "platform/UniqueFd.h"

#include <filesystem>

namespace kalvento::internal {

/// Wakes whoever waits for news of one file: it was written, renamed, removed, or its name now belongs to another one.
/// A notice only wakes; look to see what happened. Network file systems give none of what another machine does.
class KALVENTO_API FileWatch {
public:
    /// Watches nothing.
    FileWatch() = default;
    /// Begins with the file that has the name now, if any.
    explicit FileWatch(const std::filesystem::path& a_path);

    /// For Descriptors::WaitForAny: ready as long as there is news; -1 where the system gives none.
    int GetFd() const { return m_notices.Get(); }
    /// Takes the news that is there.
    void Drain() const;

private:
    UniqueFd m_notices;
};

} // namespace kalvento::internal
