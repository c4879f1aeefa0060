#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace kalvento::rows {

/// What a reader reports on the way. An empty function isn't called; what one raises passes through the reader.
struct ReadHooks {
    /// Columns of the header, separated by commas, that mean nothing and are skipped. From within the constructor.
    std::function<void(const std::string& a_columns)> passedOver;
    /// The rows run from the newest to the oldest and are turned. From within the constructor.
    std::function<void()> turned;
    /// A line that is set aside (EBadLinesReject); before the first one, the header line. From within Read.
    std::function<void(std::string_view a_line)> setAside;
};

} // namespace kalvento::rows
