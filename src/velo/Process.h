#pragma once

#include "platform/Export.h"

#include <memory>
#include <string_view>

namespace kalvento::internal {
class ChildProcess;
}

/// Programs started beside us.
namespace VeloTools::Process {

/// Opaque to the caller: null, or something that belongs to the result.
using Handle = const void*;

/// The hold on a started program. Moving leaves the other one empty; the destructor closes the handles and lets the
/// program run on.
class KALVENTO_API OpenProcessResult {
public:
    /// Empty: both handles are null.
    OpenProcessResult() noexcept;
    explicit OpenProcessResult(std::unique_ptr<kalvento::internal::ChildProcess> a_process) noexcept;
    OpenProcessResult(OpenProcessResult&& a_other) noexcept;
    OpenProcessResult& operator=(OpenProcessResult&& a_other) noexcept;
    ~OpenProcessResult();

    /// Both are null where the start failed or the handles were closed.
    Handle GetProcessHandle() const { return m_process.get(); }
    Handle GetThreadHandle() const { return m_process.get(); }

    /// Lets go of the program without ending it.
    void CloseHandles();

private:
    friend KALVENTO_API void CloseProcess(const OpenProcessResult& a_process);

    std::unique_ptr<kalvento::internal::ChildProcess> m_process;
};

/// Starts a program: a path, or a name to be looked up in PATH. The arguments are one text, split at blanks and tabs: a
/// part in double quotes keeps its blanks, "" is an empty argument, \" is a quote, and a backslash anywhere else is a
/// backslash; before a quote each two stand for one. A failure is logged and gives null handles.
KALVENTO_API OpenProcessResult OpenProcess(std::wstring_view a_program, std::wstring_view a_arguments);

/// Asks the program to end and forces it two seconds later. Does nothing on an empty result or a program that has ended
/// by itself.
KALVENTO_API void CloseProcess(const OpenProcessResult& a_process);

} // namespace VeloTools::Process
