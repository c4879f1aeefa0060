#include "platform/Interruption.h"

#include "platform/WakeUp.h"

#include <signal.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>

namespace kalvento::internal {

namespace {

constexpr std::array S_signals = {SIGINT, SIGTERM, SIGHUP};

// A handler can reach only globals. Lock-free, so a handler may read it.
std::atomic<WakeUp*> S_raised = nullptr;
static_assert(std::atomic<WakeUp*>::is_always_lock_free);

std::atomic<int> S_signal = 0;
std::atomic<int> S_depth = 0;

std::array<struct sigaction, S_signals.size()> S_oldActions;

void HandleSignal(int a_signal)
{
    int none = 0;
    if (!S_signal.compare_exchange_strong(none, a_signal) && S_depth == 1) {
        ::signal(a_signal, SIG_DFL);
        ::raise(a_signal); // waits until this handler returns
    }
    S_raised.load()->Raise();
}

const char* NameOf(int a_signal)
{
    if (a_signal == SIGINT)
        return "SIGINT";
    return a_signal == SIGTERM ? "SIGTERM" : "SIGHUP";
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
    WakeUp& shared = Shared();
    if (S_depth++ > 0)
        return;
    // A signal meant for an earlier command must not reach this one.
    shared.Lower();
    S_signal = 0;
    S_raised = &shared;
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
    if (--S_depth > 0)
        return;
    for (std::size_t place = 0; place < S_signals.size(); ++place)
        ::sigaction(S_signals[place], &S_oldActions[place], nullptr);
}

int Interruption::GetFd() const
{
    return Shared().GetFd();
}

int Interruption::GetWaitFd() noexcept
{
    return S_depth > 0 ? S_raised.load()->GetFd() : -1;
}

int Interruption::GetSignal() noexcept
{
    return S_depth > 0 ? S_signal.load() : 0;
}

void Interruption::Check()
{
    if (const int number = GetSignal(); number != 0)
        throw Interrupted(number);
}

void Interruption::EndBy(int a_signal)
{
    ::signal(a_signal, SIG_DFL);
    ::raise(a_signal);
    std::_Exit(128 + a_signal); // blocked: the number that shells give it
}

Interrupted::Interrupted(int a_signal) : m_signal(a_signal), m_name(NameOf(a_signal)) {}

} // namespace kalvento::internal
