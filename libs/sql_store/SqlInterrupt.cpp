#include "sql_store/SqlInterrupt.h"

#include "platform/Descriptors.h"

using kalvento::internal::Descriptors::ShutDownSocket;

void SqlInterrupt::Interrupt()
{
    const std::lock_guard lock(m_mutex);
    m_interrupted = true;
    m_wake.Raise();
    for (const int socket : m_sockets)
        ShutDownSocket(socket);
}

void SqlInterrupt::Add(int a_socket)
{
    const std::lock_guard lock(m_mutex);
    m_sockets.insert(a_socket);
    if (m_interrupted)
        ShutDownSocket(a_socket);
}

void SqlInterrupt::Remove(int a_socket)
{
    const std::lock_guard lock(m_mutex);
    m_sockets.erase(a_socket);
}
