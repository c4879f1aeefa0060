#include "platform/HandleTable.h"
#include "platform/MessageDelivery.h"
#include "platform/Messages.h"
#include "platform/WindowMessages.h"
#include "platform/WindowThread.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {

using kalvento::internal::HandleTable;
using kalvento::internal::IMessageTarget;

constexpr std::size_t S_windows = 200; // a full desktop
constexpr std::size_t S_messages = 10'000;

// The levels that a message passes in a window: procedure, handlers, default.
class Window : public IMessageTarget {
public:
    explicit Window(HWND a_parent) : m_parent(a_parent) {}

    LRESULT WindowProc(UINT a_message, WPARAM a_wParam, LPARAM a_lParam) override
    {
        LRESULT answer = 0;
        return OnWndMsg(a_message, a_wParam, a_lParam, answer) ? answer
                                                               : DefWindowProc(a_message, a_wParam, a_lParam);
    }
    bool PreTranslateMessage(MSG*) override { return false; }
    HWND GetParentHandle() const override { return m_parent; }
    std::size_t GetCount() const { return m_count; }

protected:
    virtual bool OnWndMsg(UINT a_message, WPARAM, LPARAM, LRESULT& a_answer)
    {
        a_answer = 1;
        return a_message == WM_CLOSE;
    }
    virtual LRESULT DefWindowProc(UINT, WPARAM a_wParam, LPARAM)
    {
        ++m_count;
        return static_cast<LRESULT>(a_wParam);
    }

private:
    HWND m_parent;
    std::size_t m_count = 0;
};

// Programs have many classes of windows, so no caller knows beforehand which one it meets.
class Sheet : public Window {
public:
    using Window::Window;

protected:
    bool OnWndMsg(UINT a_message, WPARAM a_wParam, LPARAM a_lParam, LRESULT& a_answer) override
    {
        return a_message == WM_DESTROY || Window::OnWndMsg(a_message, a_wParam, a_lParam, a_answer);
    }
    LRESULT DefWindowProc(UINT a_message, WPARAM a_wParam, LPARAM a_lParam) override
    {
        return Window::DefWindowProc(a_message, a_wParam, a_lParam);
    }
};

// Windows of one panel, and the handles that messages go to, in a shuffled order.
struct Desktop {
    kalvento::internal::WindowThread thread;
    std::vector<std::unique_ptr<Window>> windows;
    std::vector<HWND> all;
    std::vector<HWND> targets;

    Desktop()
    {
        HandleTable& table = HandleTable::OfProcess();
        for (std::size_t number = 0; number < S_windows; ++number) {
            const HWND parent = all.empty() ? nullptr : all.front();
            if (number % 2 == 0)
                windows.push_back(std::make_unique<Sheet>(parent));
            else
                windows.push_back(std::make_unique<Window>(parent));
            all.push_back(table.Add(*windows.back()));
        }
        std::mt19937 random(1);
        for (std::size_t number = 0; number < S_messages; ++number)
            targets.push_back(all[random() % all.size()]);
    }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    ~Desktop()
    {
        for (const HWND window : all)
            HandleTable::OfProcess().Remove(window);
    }

    std::size_t GetCount() const
    {
        std::size_t count = 0;
        for (const auto& window : windows)
            count += window->GetCount();
        return count;
    }
};

void Check(bool a_holds)
{
    if (!a_holds)
        std::abort();
}

void CountMessages(benchmark::State& a_state)
{
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(S_messages));
}

// What every paint, click and change of an instrument begins with.
void BM_FindWindow(benchmark::State& a_state)
{
    const Desktop desktop;
    const HandleTable& table = HandleTable::OfProcess();
    for (auto _ : a_state)
        for (const HWND target : desktop.targets)
            benchmark::DoNotOptimize(table.Find(target));
    CountMessages(a_state);
}
BENCHMARK(BM_FindWindow);

std::unordered_map<HWND, IMessageTarget*> HashOf(const Desktop& a_desktop)
{
    std::unordered_map<HWND, IMessageTarget*> hash;
    for (std::size_t number = 0; number < S_windows; ++number)
        hash.emplace(a_desktop.all[number], a_desktop.windows[number].get());
    return hash;
}

void BM_FindByHash(benchmark::State& a_state)
{
    const Desktop desktop;
    const auto hash = HashOf(desktop);
    for (auto _ : a_state)
        for (const HWND target : desktop.targets)
            benchmark::DoNotOptimize(hash.find(target)->second);
    CountMessages(a_state);
}
BENCHMARK(BM_FindByHash);

void BM_SendMessage(benchmark::State& a_state)
{
    const Desktop desktop;
    Check(SendMessageW(desktop.all.back(), WM_USER, 5, 0) == 5 && desktop.GetCount() == 1);
    for (auto _ : a_state)
        for (const HWND target : desktop.targets)
            benchmark::DoNotOptimize(SendMessageW(target, WM_USER, 1, 0));
    CountMessages(a_state);
}
BENCHMARK(BM_SendMessage);

void BM_CallByHash(benchmark::State& a_state)
{
    const Desktop desktop;
    const auto hash = HashOf(desktop);
    for (auto _ : a_state)
        for (const HWND target : desktop.targets)
            benchmark::DoNotOptimize(hash.find(target)->second->WindowProc(WM_USER, 1, 0));
    CountMessages(a_state);
}
BENCHMARK(BM_CallByHash);

// Posted and delivered by one thread, the walk over the parent included.
void BM_PostMessage(benchmark::State& a_state)
{
    const Desktop desktop;
    for (auto _ : a_state) {
        for (const HWND target : desktop.targets)
            PostMessageW(target, WM_USER, 1, 0);
        Check(kalvento::internal::DeliverPostedMessages() == S_messages);
    }
    Check(desktop.GetCount() == static_cast<std::size_t>(a_state.iterations()) * S_messages);
    CountMessages(a_state);
}
BENCHMARK(BM_PostMessage);

// Providers' threads post at once while the window thread delivers.
void BM_PostFromThreads(benchmark::State& a_state)
{
    const Desktop desktop;
    const auto threads = static_cast<std::size_t>(a_state.range(0));
    for (auto _ : a_state) {
        std::vector<std::thread> posting;
        for (std::size_t thread = 0; thread < threads; ++thread)
            posting.emplace_back([&desktop, thread, threads] {
                for (std::size_t number = thread; number < S_messages; number += threads)
                    PostMessageW(desktop.targets[number], WM_USER, 1, 0);
            });
        for (std::size_t delivered = 0; delivered < S_messages;)
            delivered += kalvento::internal::DeliverPostedMessages();
        for (std::thread& thread : posting)
            thread.join();
    }
    Check(desktop.GetCount() == static_cast<std::size_t>(a_state.iterations()) * S_messages);
    CountMessages(a_state);
}
BENCHMARK(BM_PostFromThreads)->Arg(4)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
