#include "platform/Interruption.h"

#include "platform/WakeUp.h"

#include <signal.h>

#include <array>
#include <atomic>
#include <cstddef>

namespace kalvento::internal {

namespace {

constexpr std::array S_signals = {SIGINT, SIGTERM, SIGHUP};

// A handler can reach only globals. Lock-free, so a handler may read it.
std::atomic<WakeUp*> S_raised = nullptr;
static_assert(std::atomic<WakeUp*>::is_always_lock_free);

std::array<struct sigaction, S_signals.size()> S_oldActions;

void HandleSignal(int)
{
    S_raised.load()->Raise();
}

/// The one of the process. It stays open: another thread's signal handler may still write to it when the waiting
/// command is gone, and a closed descriptor could by then be somebody else's file.
WakeUp& Shared()
{
    static auto* const S_shared = new WakeUp("can't wait for signals");
    return *S_shared;
}

} // namespace

Interruption::Interruption()
{
    // A signal meant for an earlier command must not reach this one.
    Shared().Lower();
    S_raised = &Shared();
    for (std::size_t place = 0; place < S_signals.size(); ++place) {
        struct sigaction action {};
        ::sigaction(S_signals[place], nullptr, &S_oldActions[place]);
        action.sa_handler = HandleSignal;
        if (S_signals[place] != SIGHUP || S_oldActions[place].sa_handler != SIG_IGN)
            ::sigaction(S_signals[place], &action, nullptr);
    }
}

Interruption::~Interruption()
{
    for (std::size_t place = 0; place < S_signals.size(); ++place)
        ::sigaction(S_signals[place], &S_oldActions[place], nullptr);
}

int Interruption::GetFd() const
{
    return Shared().GetFd();
}

} // namespace kalvento::internal
