#pragma once

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
    }
    std::vector<std::string> GetCalls()
    {
        const std::lock_guard lock(mutex);
        return calls;
    }

    std::mutex mutex; // of all below
    std::vector<std::string> calls;
};
