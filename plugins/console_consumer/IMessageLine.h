#pragma once

#include "platform/Export.h"

#include <string_view>

/// A module that has a place for the host's messages. The program finds it by a cast of the consumer; since the two are in
/// different shared objects, the type is exported.
class KALVENTO_API IMessageLine {
public:
    virtual ~IMessageLine() = default;
    /// Shows the text until the next one comes. Main thread.
    virtual void ShowMessageLine(std::wstring_view a_text) = 0;

    IMessageLine(const IMessageLine&) = delete;
    IMessageLine& operator=(const IMessageLine&) = delete;

protected:
    IMessageLine() = default;
};
