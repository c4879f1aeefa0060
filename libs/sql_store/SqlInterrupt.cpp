#include "sql_store/SqlInterrupt.h"

#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <system_error>

SqlInterrupt::SqlInterrupt() : m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_wake.IsOpen())
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

void SqlInterrupt::Interrupt()
{
    const std::lock_guard lock(m_mutex);
    m_interrupted = true;
    ::eventfd_write(m_wake.Get(), 1);
    for (const int socket : m_sockets)
        ::shutdown(socket, SHUT_RDWR);
}

void SqlInterrupt::Add(int a_socket)
{
    const std::lock_guard lock(m_mutex);
    m_sockets.insert(a_socket);
    if (m_interrupted)
        ::shutdown(a_socket, SHUT_RDWR);
}

void SqlInterrupt::Remove(int a_socket)
{
    const std::lock_guard lock(m_mutex);
    m_sockets.erase(a_socket);
}
