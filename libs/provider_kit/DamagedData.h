#pragma once

#include <stdexcept>

/// Raised by the reading operations of IMarketStore where what is stored of the instrument can't be read and no waiting
/// will mend it. The text is for the log and says which instrument and which rows. The store goes on for everybody
/// else.
class DamagedData : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
