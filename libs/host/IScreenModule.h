#pragma once

#include "platform/Export.h"

#include <string_view>

namespace kalvento::host {

/// A consumer that takes over the program's terminal, and so has to show there what the program would have printed. The
/// program finds it by a cast of the consumer; since the two are in different shared objects, the type is exported.
class KALVENTO_API IScreenModule {
public:
    virtual ~IScreenModule() = default;
    /// Shows the text until the next one comes. Main thread.
    virtual void ShowMessageLine(std::wstring_view a_text) = 0;
    /// Shows the text whenever no message is shown, until another one takes its place; empty for none. Main thread.
    virtual void ShowStandingLine(std::wstring_view a_text) = 0;

    IScreenModule(const IScreenModule&) = delete;
    IScreenModule& operator=(const IScreenModule&) = delete;

protected:
    IScreenModule() = default;
};

} // namespace kalvento::host
