#pragma once

#include "platform/Export.h"

#include <string>

/// The number of a window message, one for each name in the process: 0xC000 to 0xFFFF, above what any window uses for
/// itself. Instances are static objects, made before main as well; safe from any thread.
class KALVENTO_API UniqueMessage {
public:
    /// Names are compared character by character. The 16385th name raises std::length_error.
    explicit UniqueMessage(const std::wstring& a_name);

    unsigned int GetNumber() const { return m_number; }
    operator unsigned int() const
    {
        return m_number;
    } // NOLINT(google-explicit-constructor): it is that number.

private:
    unsigned int m_number;
};
