#include "platform/WindowThread.h"

#include "platform/CodePage.h"

#include <atomic>
#include <stdexcept>
#include <string>

namespace kalvento::internal {

namespace {

std::atomic<bool> S_isChosen = false;
// Every message asks for it, so it is kept where a thread finds it without a call.
[[gnu::tls_model("initial-exec")]] thread_local bool S_isCurrent = false;

} // namespace

WindowThread::WindowThread()
{
    if (S_isChosen.exchange(true))
        throw std::logic_error("Wątek okien jest już wybrany: WindowThread"_cp1250);
    S_isCurrent = true;
}

WindowThread::~WindowThread()
{
    S_isCurrent = false;
    S_isChosen = false;
}

bool WindowThread::IsCurrent() noexcept
{
    return S_isCurrent;
}

void WindowThread::Require(const char* a_operation)
{
    if (!IsCurrent())
        throw std::logic_error(a_operation + std::string(": dozwolone tylko w wątku okien"_cp1250));
}

} // namespace kalvento::internal
