#pragma once

#include <functional>
#include <string>
#include <string_view>

class IGenericModule;

namespace kalvento::host {

/// Calls an operation of a module for a program that goes on whatever the module raises. Empty where the call returned
/// normally; otherwise a line for the user with the module, the operation and what was raised, which is in the log
/// already.
std::wstring CallModule(const IGenericModule& a_module, std::wstring_view a_operation,
                        const std::function<void()>& a_call);

} // namespace kalvento::host
