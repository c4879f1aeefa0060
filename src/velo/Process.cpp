#include "velo/Process.h"

#include "platform/ChildProcess.h"
#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/WidePath.h"
#include "velo/Log.h"

#include <fmt/format.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace VeloTools::Process {

namespace {

using kalvento::internal::ChildProcess;

constexpr std::chrono::milliseconds S_patience(2000);

bool IsBlank(wchar_t a_character)
{
    return a_character == L' ' || a_character == L'\t';
}

std::vector<std::string> SplitArguments(std::wstring_view a_text)
{
    std::vector<std::string> arguments;
    std::size_t place = 0;
    while (true) {
        while (place < a_text.size() && IsBlank(a_text[place]))
            ++place;
        if (place == a_text.size())
            return arguments;

        std::wstring argument;
        bool quoted = false;
        while (place < a_text.size() && (quoted || !IsBlank(a_text[place]))) {
            std::size_t backslashes = 0;
            while (place < a_text.size() && a_text[place] == L'\\') {
                ++backslashes;
                ++place;
            }
            const bool beforeQuote = place < a_text.size() && a_text[place] == L'"';
            argument.append(beforeQuote ? backslashes / 2 : backslashes, L'\\');
            if (beforeQuote) {
                if (backslashes % 2 == 1)
                    argument += L'"';
                else
                    quoted = !quoted;
                ++place;
            } else if (backslashes == 0) {
                argument += a_text[place++];
            }
        }
        // A file name among the arguments must reach the program byte by byte.
        arguments.push_back(WidePath::ToPath(argument).native());
    }
}

} // namespace

OpenProcessResult::OpenProcessResult() noexcept = default;

OpenProcessResult::OpenProcessResult(std::unique_ptr<ChildProcess> a_process) noexcept
    : m_process(std::move(a_process))
{}

OpenProcessResult::OpenProcessResult(OpenProcessResult&& a_other) noexcept = default;
OpenProcessResult& OpenProcessResult::operator=(OpenProcessResult&& a_other) noexcept = default;
OpenProcessResult::~OpenProcessResult() = default;

void OpenProcessResult::CloseHandles()
{
    m_process.reset();
}

OpenProcessResult OpenProcess(std::wstring_view a_program, std::wstring_view a_arguments)
{
    auto process = ChildProcess::Start(WidePath::ToPath(a_program).native(), SplitArguments(a_arguments));
    if (process)
        return OpenProcessResult(std::make_unique<ChildProcess>(*std::move(process)));
    const std::error_code error(errno, std::generic_category());
    Log::Instance().Write("Process::OpenProcess", __LINE__,
                          fmt::format(fmt::runtime("Nie można uruchomić programu {}: {}"_cp1250),
                                      CodePage::WideToCp1250(a_program),
                                      kalvento::internal::ErrorText(error)));
    return {};
}

void CloseProcess(const OpenProcessResult& a_process)
{
    if (a_process.m_process)
        a_process.m_process->End(S_patience);
}

} // namespace VeloTools::Process
