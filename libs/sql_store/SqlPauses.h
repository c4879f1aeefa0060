#pragma once

#include <chrono>

/// The pauses between two attempts to connect; they double from the shortest to the longest.
struct SqlPauses {
    std::chrono::milliseconds shortest{100};
    std::chrono::milliseconds longest{5000};
};
