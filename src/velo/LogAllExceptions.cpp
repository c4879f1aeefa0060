#include "velo/LogAllExceptions.h"

#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/WidePath.h"
#include "velo/Log.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <typeinfo>

namespace {

// A handler that wraps in a loop may nest exceptions without end; nobody reads deeper than this.
constexpr int S_deepestCause = 32;

std::string TypeName(const std::type_info* a_type)
{
    if (a_type == nullptr)
        return "nieznany typ";
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(a_type->name(), nullptr, nullptr, &status), &std::free);
    return status == 0 && name ? name.get() : a_type->name();
}

// The files that it is about; their names are UTF-8.
std::string PathsOf(const std::system_error& a_exception)
{
    std::string text;
    const auto* const files = dynamic_cast<const std::filesystem::filesystem_error*>(&a_exception);
    for (const std::filesystem::path& path : {files != nullptr ? files->path1() : std::filesystem::path(),
                                              files != nullptr ? files->path2() : std::filesystem::path()})
        if (!path.empty())
            text += (text.empty() ? ": " : ", ") + CodePage::WideToCp1250(WidePath::ToWide(path));
    return text;
}

// Text of the exception in flight; a_cause takes what it was wrapped around, null where nothing.
std::string Describe(std::exception_ptr& a_cause)
{
    a_cause = nullptr;
    std::string type = TypeName(abi::__cxa_current_exception_type());
    const auto causeOf = [](const auto& a_exception) -> std::exception_ptr {
        const auto* const nested = dynamic_cast<const std::nested_exception*>(&a_exception);
        return nested != nullptr ? nested->nested_ptr() : nullptr;
    };
    try {
        throw;
    } catch (const std::system_error& exception) {
        a_cause = causeOf(exception);
        return type + ": " + kalvento::internal::ErrorText(exception.code()) + PathsOf(exception);
    } catch (const std::exception& exception) {
        a_cause = causeOf(exception);
        return type + ": " + exception.what();
    } catch (const std::nested_exception& exception) {
        a_cause = exception.nested_ptr();
        return type;
    } catch (const std::string& text) {
        return type + ": " + text;
    } catch (const char* text) {
        return type + ": " + (text != nullptr ? text : "");
    } catch (int number) {
        return type + ": " + std::to_string(number);
    } catch (...) {
        return type;
    }
}

void LogCurrent(std::string_view a_source, int a_line)
{
    std::exception_ptr cause;
    VeloTools::Log::Instance().Write(a_source, a_line, "Wyjątek "_cp1250 + Describe(cause));
    for (int depth = 1; cause && depth <= S_deepestCause; ++depth) {
        try {
            std::rethrow_exception(cause);
        } catch (...) {
            VeloTools::Log::Instance().Write(a_source, a_line,
                                             "Przyczyna: wyjątek "_cp1250 + Describe(cause));
        }
    }
}

} // namespace

void LogAllExceptions(std::string_view a_source, int a_line) noexcept
{
    try {
        if (!std::current_exception()) {
            VeloTools::Log::Instance().Write(a_source, a_line, "Brak wyjątku w locie"_cp1250);
            return;
        }
        LogCurrent(a_source, a_line);
    } catch (...) {
        VeloTools::Log::Instance().Write(a_source, a_line, "Wyjątek, którego nie można opisać"_cp1250);
    }
}
