#include "platform/Messages.h"
#include "platform/CurrentMessage.h"
#include "platform/HandleTable.h"
#include "platform/MessageDelivery.h"
#include "platform/PostedMessages.h"
#include "platform/WindowMessages.h"
#include "platform/WindowThread.h"
#include "support/Testing.h"

#include <gmock/gmock.h>

using namespace kalvento::internal;

namespace {

// Handles what comes by a function of the test's; it may end the window.
class Window : public IMessageTarget {
public:
    std::function<LRESULT(const MSG&)> onMessage = [](const MSG&) { return 0; };
    std::function<bool(const MSG&)> onTranslate = [](const MSG&) { return false; };

    explicit Window(HWND a_parent = nullptr) : m_parent(a_parent) {}
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    ~Window() override { HandleTable::OfProcess().Remove(m_handle); }

    HWND GetHandle() const { return m_handle; }
    LRESULT WindowProc(UINT a_message, WPARAM a_wParam, LPARAM a_lParam) override
    {
        const auto handler = onMessage;
        return handler({m_handle, a_message, a_wParam, a_lParam});
    }
    bool PreTranslateMessage(MSG* a_message) override
    {
        const auto handler = onTranslate;
        return handler(*a_message);
    }
    HWND GetParentHandle() const override { return m_parent; }

private:
    HWND m_parent;
    HWND m_handle = HandleTable::OfProcess().Add(*this);
};

// An event loop as far as messages go: it delivers only when the wake-up came.
class MessagesTest : public ::testing::Test {
protected:
    MessagesTest()
    {
        PostedMessages::OfProcess().SetWakeUp([this] {
            ++m_wakeUps;
            m_wakeUps.notify_one();
        });
    }
    ~MessagesTest() override
    {
        PostedMessages::OfProcess().SetWakeUp({});
        PostedMessages::OfProcess().Clear();
    }

    bool WakeUpCame()
    {
        const unsigned int came = m_wakeUps;
        return m_served.exchange(came) != came;
    }
    void RunLoop()
    {
        while (WakeUpCame())
            DeliverPostedMessages();
    }
    void WaitForWakeUp() { m_wakeUps.wait(m_served); }

private:
    const WindowThread m_thread;
    std::atomic<unsigned int> m_wakeUps = 0;
    std::atomic<unsigned int> m_served = 0;
};

} // namespace

TEST_F(MessagesTest, FourThreadsPostAndNothingIsLostOrOvertaken)
{
    constexpr std::size_t S_threads = 4;
    constexpr std::size_t S_each = 25'000;
    std::array<std::size_t, S_threads> next{};
    std::size_t arrived = 0;
    const auto take = [&](const MSG& a_message) {
        EXPECT_EQ(a_message.lParam, reinterpret_cast<LPARAM>(a_message.hwnd)) << "another window's";
        if (a_message.message != WM_USER)
            return LRESULT{0};
        EXPECT_EQ(a_message.wParam / S_threads, next[a_message.wParam % S_threads]++);
        ++arrived;
        return LRESULT{0};
    };
    std::array<Window, 3> windows;
    for (Window& window : windows)
        window.onMessage = take;
    std::atomic<HWND> shortLived = nullptr;

    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < S_threads; ++thread)
        threads.emplace_back([&, thread] {
            for (std::size_t count = 0; count < S_each; ++count) {
                const HWND window = windows[count % windows.size()].GetHandle();
                EXPECT_TRUE(PostMessageW(window, WM_USER, count * S_threads + thread,
                                         reinterpret_cast<LPARAM>(window)));
                if (const HWND other = shortLived; count % 16 == 0)
                    PostMessageW(other, WM_USER + 1, 0, reinterpret_cast<LPARAM>(other));
            }
        });
    while (arrived < S_threads * S_each) {
        WaitForWakeUp();
        Window other; // comes and goes while the others post to it
        other.onMessage = take;
        shortLived = other.GetHandle();
        RunLoop();
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(next, ::testing::Each(S_each));
}

namespace {

// Windows whose handlers do at random what real ones do, beside a plain list of what must arrive next.
class RandomDelivery {
public:
    RandomDelivery(unsigned int a_seed, std::function<void()> a_runLoop)
        : m_random(a_seed), m_runLoop(std::move(a_runLoop))
    {}

    void Run()
    {
        for (int round = 0; round < 200 && !::testing::Test::HasFailure(); ++round) {
            m_budget = 30;
            Act();
            Loop();
            EXPECT_EQ(m_payloads, 0) << "a payload of a message that is done lives on";
        }
    }

private:
    struct Expected {
        HWND window;
        int id;
    };

    void DropDead()
    {
        while (!m_expected.empty() && !m_windows.contains(m_expected.front().window))
            m_expected.pop_front();
    }
    void Loop()
    {
        m_runLoop();
        DropDead();
        EXPECT_TRUE(m_expected.empty()) << "a loop came to rest while messages wait";
    }
    HWND Any() { return m_given.empty() ? nullptr : m_given[m_random() % m_given.size()]; }

    void Create()
    {
        auto window = std::make_unique<Window>();
        window->onMessage = [this](const MSG& a_message) { return OnMessage(a_message); };
        m_given.push_back(window->GetHandle());
        m_windows.emplace(window->GetHandle(), std::move(window));
    }
    void Post()
    {
        const HWND window = Any();
        const int id = m_nextId++;
        ++m_payloads;
        const std::shared_ptr<const int> payload(new int(id), [this](const int* a_gone) {
            --m_payloads;
            delete a_gone;
        });
        EXPECT_EQ(PostMessageW(window, WM_USER, payload, id), m_windows.contains(window));
        if (m_windows.contains(window))
            m_expected.push_back({window, id});
    }
    void Send()
    {
        const HWND window = Any();
        const bool isAlive = m_windows.contains(window);
        EXPECT_EQ(SendMessageW(window, WM_USER + 1, 0, m_nextId), isAlive ? m_nextId : 0);
    }
    void Act()
    {
        for (unsigned int acts = 1 + m_random() % 4; acts > 0 && m_budget > 0; --acts, --m_budget)
            switch (m_random() % 8) {
            case 0:
                m_windows.erase(Any());
                break;
            case 1:
                Create();
                break;
            case 2:
                Send();
                break;
            case 3:
                Loop();
                break;
            default:
                Post();
            }
    }
    LRESULT OnMessage(const MSG& a_message)
    {
        if (a_message.message == WM_USER) {
            DropDead();
            EXPECT_FALSE(m_expected.empty());
            if (m_expected.empty())
                return 0;
            EXPECT_EQ(a_message.lParam, m_expected.front().id);
            EXPECT_EQ(a_message.hwnd, m_expected.front().window);
            m_expected.pop_front();
        }
        const auto* const payload = std::bit_cast<const int*>(a_message.wParam);
        Act();
        EXPECT_TRUE(payload == nullptr || *payload == a_message.lParam);
        EXPECT_NE(CurrentMessage::Get(), nullptr);
        EXPECT_EQ(*CurrentMessage::Get(), a_message) << "an inner message stayed the current one";
        return a_message.lParam;
    }

    std::mt19937 m_random;
    std::function<void()> m_runLoop;
    std::map<HWND, std::unique_ptr<Window>> m_windows;
    std::vector<HWND> m_given;
    std::deque<Expected> m_expected;
    int m_nextId = 1;
    int m_payloads = 0;
    int m_budget = 0;
};

} // namespace

TEST_F(MessagesTest, NestedLoopsKeepTheOrderOfAPlainList)
{
    for (unsigned int seed = 0; seed < 50 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomDelivery(seed, [this] { RunLoop(); }).Run();
    }
    EXPECT_EQ(CurrentMessage::Get(), nullptr);
}

TEST_F(MessagesTest, WhatIsPostedMeanwhileWaitsForTheNextWakeUp)
{
    Window window;
    window.onMessage = [&](const MSG& a_message) {
        PostMessageW(window.GetHandle(), a_message.message, a_message.wParam + 1, 0);
        if (a_message.wParam == 1)
            throw std::runtime_error("a handler");
        return LRESULT{0};
    };
    PostMessageW(window.GetHandle(), WM_USER, 0, 0);
    PostMessageW(window.GetHandle(), WM_USER, 5, 0);
    EXPECT_TRUE(WakeUpCame());
    EXPECT_EQ(DeliverPostedMessages(), 2U);
    EXPECT_TRUE(WakeUpCame());
    EXPECT_THROW(DeliverPostedMessages(), std::runtime_error);
    EXPECT_TRUE(WakeUpCame()) << "the others wait although a handler threw";
    EXPECT_EQ(DeliverPostedMessages(), 2U);
    std::thread([&] {
        EXPECT_THROW(SendMessageW(window.GetHandle(), WM_USER, 0, 0), std::logic_error);
        EXPECT_THROW(DeliverPostedMessages(), std::logic_error);
    }).join();
}

TEST_F(MessagesTest, QueuedMessagesWalkOutwardsUntilOneTakesThem)
{
    const std::string taken = "abc";
    for (const std::string_view road : {"abc!", "a", "ab", "abc", "aX", "abX"}) {
        SCOPED_TRACE(road);
        // X: that ancestor ends the first window, with which the message ends.
        auto grandparent = std::make_unique<Window>();
        auto parent = std::make_unique<Window>(grandparent->GetHandle());
        auto child = std::make_unique<Window>(parent->GetHandle());
        std::string walked;
        const std::array<Window*, 3> inside = {child.get(), parent.get(), grandparent.get()};
        for (std::size_t level = 0; level < inside.size(); ++level)
            inside[level]->onTranslate = [&, level](const MSG&) {
                const bool ends = level < road.size() && road[level] == 'X';
                walked += ends ? 'X' : taken[level];
                if (ends)
                    child.reset();
                return !ends && walked == road;
            };
        child->onMessage = [&](const MSG&) {
            walked += '!';
            return 7;
        };
        EXPECT_EQ(SendMessageW(child->GetHandle(), WM_KEYDOWN, 0, 0), 7);
        EXPECT_EQ(walked, "!") << "what is sent doesn't walk";
        walked.clear();
        PostMessageW(child->GetHandle(), WM_KEYDOWN, 0, 0);
        RunLoop();
        EXPECT_EQ(walked, road);
    }
}
