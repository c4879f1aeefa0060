#include "host/CallModule.h"

#include "modules/IGenericModule.h"
#include "platform/CodePage.h"
#include "velo/Log.h"

#include <exception>

namespace kalvento::host {

namespace {

std::wstring Tell(const IGenericModule& a_module, std::wstring_view a_operation, std::wstring_view a_reason)
{
    std::wstring text = L"Moduł " + a_module.GetName() + L", ";
    text.append(a_operation).append(L": ").append(a_reason);
    VeloTools::Log::Instance().Write("kalvento::host::CallModule", __LINE__, CodePage::WideToCp1250(text));
    return text;
}

} // namespace

std::wstring CallModule(const IGenericModule& a_module, std::wstring_view a_operation,
                        const std::function<void()>& a_call)
{
    try {
        a_call();
        return {};
    } catch (const std::exception& exception) {
        return Tell(a_module, a_operation, L"wyjątek: " + CodePage::Cp1250ToWide(exception.what()));
    } catch (...) {
        return Tell(a_module, a_operation, L"wyjątek nieznanego typu");
    }
}

} // namespace kalvento::host
