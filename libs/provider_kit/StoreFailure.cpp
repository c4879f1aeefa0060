#include "provider_kit/StoreFailure.h"

#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "velo/Log.h"
#include "velo/LogAllExceptions.h"

#include <exception>

namespace kalvento::internal {

std::wstring FailureText()
{
    try {
        throw;
    } catch (const std::exception& failure) {
        return CodePage::Cp1250ToWide(failure.what());
    } catch (...) {
        return L"przyczyna nieznana";
    }
}

void LogStoreFailure(const ProviderBase& a_provider, const char* a_place, int a_line,
                     const std::string& a_isin)
{
    std::string text = "Dostawca "_cp1250 + CodePage::WideToCp1250(a_provider.GetName());
    if (!a_isin.empty())
        text += ", walor "_cp1250 + a_isin;
    VeloTools::Log::Instance().Write(a_place, a_line, text + ": magazyn zawiódł"_cp1250);
    LogAllExceptions(a_place, a_line);
}

} // namespace kalvento::internal
