#pragma once

#include <cstdint>

/// How the field of a module on the status bar is painted.
enum EStatusLevel : std::uint32_t {
    EStatusLevelIdle = 0,    ///< Switched off by the user, or nothing to do.
    EStatusLevelWorking = 1, ///< On the way to EStatusLevelGood: connecting, logging on, loading.
    EStatusLevelGood = 2,
    EStatusLevelProblem = 3 ///< Something failed that the user should see.
};
