#pragma once

#include "support/Testing.h"

#include <latch>

/// Runs the action on so many threads, all of which begin at once, and waits for them.
inline void RunOnThreads(int a_count, const std::function<void()>& a_action)
{
    std::latch start(a_count);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < a_count; ++thread)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            a_action();
        });
    for (std::thread& thread : threads)
        thread.join();
}
