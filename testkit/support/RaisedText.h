#pragma once

#include <exception>
#include <string>

namespace kalvento::tests {

/// The text of the Exception that a_action raises; "nothing raised" when it raises none; other exceptions pass through.
template<class Exception, class Action>
std::string RaisedText(Action a_action)
{
    try {
        a_action();
    } catch (const Exception& failure) {
        return failure.what();
    }
    return "nothing raised";
}

} // namespace kalvento::tests
