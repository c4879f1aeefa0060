#pragma once

#include <stdexcept>

/// Raised by the reading operations of IMarketStore where the instrument's stored data can't be read and waiting won't
/// help. The text is for the log and says which instrument and which rows. The store goes on for everybody else.
class DamagedData : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
