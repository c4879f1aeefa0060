#pragma once

#include <unistd.h>

#include <utility>

namespace kalvento::internal {

/// Owns one file descriptor; -1 is none.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int a_fd) : m_fd(a_fd) {}
    UniqueFd(UniqueFd&& a_other) noexcept : m_fd(std::exchange(a_other.m_fd, -1)) {}
    UniqueFd& operator=(UniqueFd&& a_other) noexcept
    {
        std::swap(m_fd, a_other.m_fd);
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { Close(); }

    int Get() const { return m_fd; }
    bool IsOpen() const { return m_fd >= 0; }
    /// The result of close(); 0 where nothing was open.
    int Close() { return m_fd >= 0 ? ::close(std::exchange(m_fd, -1)) : 0; }

private:
    int m_fd = -1;
};

} // namespace kalvento::internal
