#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// What the test plug-ins do, noted by them for the test: its address goes to them in their options.
struct Recorder {
    void Note(std::string a_call)
    {
        const std::lock_guard lock(mutex);
        calls.push_back(std::move(a_call));
        changed.notify_all();
    }
    std::vector<std::string> GetCalls()
    {
        const std::lock_guard lock(mutex);
        return calls;
    }
    /// Hangs until a test lets go.
    void Hang()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return isReleased; });
        calls.emplace_back("returned");
        changed.notify_all();
    }
    /// Returns when what hung has come back.
    void Release()
    {
        std::unique_lock lock(mutex);
        isReleased = true;
        changed.notify_all();
        changed.wait(lock, [this] { return !calls.empty() && calls.back() == "returned"; });
    }

    std::mutex mutex; // of all below
    std::condition_variable changed;
    std::vector<std::string> calls;
    bool isReleased = false;
};
