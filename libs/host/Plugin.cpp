#include "host/Plugin.h"

#include "host/CallModule.h"
#include "host/HostOptions.h"
#include "host/IPluginCalls.h"
#include "host/ModuleDirectory.h"
#include "host/ModuleStates.h"
#include "modules/ConsumerBase.h"
#include "modules/PluginDescription.h"
#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "velo/Log.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <utility>

namespace kalvento::host {

namespace {

const std::wstring S_phaseLoading = L"ładowanie";
const std::wstring S_phaseMaking = L"tworzenie modułów";
constexpr const wchar_t* S_givingBack = L"oddanie ustawień";

// Why a plug-in isn't for this host.
struct Refusal {
    EPluginState state;
    std::wstring reason;
};

void WriteLog(int a_line, std::wstring_view a_text)
{
    VeloTools::Log::Instance().Write("kalvento::host::Plugin", a_line, CodePage::WideToCp1250(a_text));
}

// The loader names the file itself where the fault is there, and otherwise the library that it couldn't find.
std::wstring LoadError(const std::filesystem::path& a_path, const std::string& a_error)
{
    const std::size_t notFound = a_error.find(": cannot open shared object file");
    if (notFound != std::string::npos && !a_error.starts_with(a_path.native()))
        return L"brakuje biblioteki, której wtyczka używa: " +
               CodePage::Utf8ToWide(a_error.substr(0, notFound)) + L"; trzeba ją zainstalować";
    return L"nie można wczytać pliku: " + CodePage::Utf8ToWide(a_error);
}

} // namespace

Plugin::Plugin(std::filesystem::path a_path, std::shared_ptr<const HostOptions> a_options,
               std::shared_ptr<ModuleDirectory> a_directory, std::shared_ptr<IPluginCalls> a_calls)
    : m_path(std::move(a_path)),
      m_options(std::move(a_options)),
      m_directory(a_directory),
      m_calls(std::move(a_calls)),
      m_modules(std::move(a_directory))
{
    m_report.path = m_path;
    m_report.name = CodePage::Utf8ToWide(m_path.stem().native());
}

Plugin::~Plugin()
{
    DestroyConsumers();
    DestroyProviders();
    Unload();
}

void Plugin::Load()
{
    Guarded([this] { DoLoad(); });
}

void Plugin::MakeModules()
{
    Guarded([this] { DoMakeModules(); });
}

void Plugin::StartProviders()
{
    Guarded([this] { Start(m_modules.GetProviders(), m_providers); });
}

void Plugin::StartConsumers()
{
    Guarded([this] { Start(m_modules.GetConsumers(), m_consumers); });
}

void Plugin::GiveProvidersTheirStates(ModuleStates& a_states)
{
    for (ProviderBase* const provider : m_providers)
        CallOne(*provider, S_givingBack, [&] { a_states.GiveBack(*provider); });
}

void Plugin::GiveConsumersTheirStates(ModuleStates& a_states)
{
    for (ConsumerBase* const consumer : m_consumers)
        CallOne(*consumer, S_givingBack, [&] { a_states.GiveBack(*consumer); });
}

void Plugin::TakeStates(ModuleStates& a_states)
{
    const auto take = [&](const IGenericModule* module) {
        CallOne(*module, L"zapis ustawień", [&] { a_states.Take(*module); });
    };
    std::ranges::for_each(m_providers, take);
    std::ranges::for_each(m_consumers, take);
}

void Plugin::StopConsumers()
{
    StopAll(m_consumers);
}

void Plugin::StopProviders()
{
    StopAll(m_providers);
}

void Plugin::DestroyConsumers()
{
    Enter(L"usuwanie modułów");
    m_modules.DestroyConsumers();
    m_calls->Leave();
}

void Plugin::DestroyProviders()
{
    Enter(L"usuwanie modułów");
    m_modules.DestroyProviders();
    m_calls->Leave();
}

void Plugin::Unload()
{
    Enter(L"zwalnianie pliku");
    m_description = nullptr;
    m_library.Unload();
    m_calls->Leave();
}

// What it made is destroyed and unloaded at the end only: somebody may have found one, and an asset holds its provider
// by a bare pointer.
void Plugin::Fail(EPluginState a_state, std::wstring a_reason)
{
    m_report.state = a_state;
    m_report.reason = std::move(a_reason);
    WriteLog(__LINE__, L"Wtyczka " + m_report.name + L", " + m_report.phase + L": " + m_report.reason);
    m_modules.Withdraw();
    StopConsumers();
    StopProviders();
    if (m_report.state == EPluginStateRefused)
        Unload();
}

void Plugin::Enter(std::wstring a_phase)
{
    m_calls->Enter({m_path, m_report.name, std::move(a_phase)});
}

template<typename Step>
void Plugin::Guarded(const Step& a_step)
{
    if (!IsRunning())
        return;
    try {
        a_step();
        m_report.phase.clear();
    } catch (const Refusal& refusal) {
        Fail(refusal.state, refusal.reason);
    } catch (const std::exception& exception) {
        Fail(EPluginStateFailed, L"wyjątek: " + CodePage::Cp1250ToWide(exception.what()));
    } catch (...) {
        Fail(EPluginStateFailed, L"wyjątek nieznanego typu");
    }
    m_calls->Leave();
}

template<typename Call>
void Plugin::CallOne(const IGenericModule& a_module, const wchar_t* a_what, const Call& a_call)
{
    Enter(std::wstring(a_what) + L" modułu " + a_module.GetName());
    const std::wstring fault = CallModule(a_module, a_what, a_call);
    if (!fault.empty())
        m_report.notices.push_back(fault);
    m_calls->Leave();
}

template<typename Module>
void Plugin::StopAll(std::vector<Module*>& a_modules)
{
    for (; !a_modules.empty(); a_modules.pop_back())
        CallOne(*a_modules.back(), L"StopWork", [&] { a_modules.back()->StopWork(); });
}

void Plugin::DoMakeModules()
{
    Enter(m_report.phase = S_phaseMaking);
    const auto options = m_options->pluginOptions.find(m_description->name);
    m_description->createModules(m_modules,
                                 options != m_options->pluginOptions.end() ? options->second : Settings());
}

template<typename Module>
void Plugin::Start(const std::vector<Module*>& a_modules, std::vector<Module*>& a_ready)
{
    for (Module* const module : a_modules) {
        Enter(m_report.phase = L"Init modułu " + module->GetName());
        if (!module->Init())
            throw Refusal{EPluginStateFailed, L"moduł odmówił pracy"};
        a_ready.push_back(module);
    }
    for (Module* const module : a_ready)
        m_directory->Enter(*module);
}

void Plugin::DoLoad()
{
    Enter(m_report.phase = S_phaseLoading);
    const std::string error = m_library.Load(m_path);
    if (!error.empty())
        throw Refusal{EPluginStateRefused, LoadError(m_path, error)};
    const auto* const description =
        static_cast<const PluginDescription*>(m_library.Find(PluginDescription::S_symbol));
    if (description == nullptr)
        throw Refusal{EPluginStateRefused, L"to nie jest wtyczka: brakuje symbolu " +
                                               CodePage::Utf8ToWide(PluginDescription::S_symbol)};
    CheckDescription(*description);

    m_description = description;
    m_report.name = CodePage::Utf8ToWide(description->name);
    m_report.version = CodePage::Utf8ToWide(description->version);
}

void Plugin::CheckDescription(const PluginDescription& a_description) const
{
    const auto refuse = [](std::wstring a_reason) {
        throw Refusal{EPluginStateRefused,
                      std::move(a_reason) + L"; trzeba ją zbudować z tą wersją biblioteki"};
    };
    // The first two fields keep their places in every version; the others can be read only after this check.
    if (a_description.abi != PluginDescription::S_abi)
        refuse(L"wersja interfejsu wtyczki: " + std::to_wstring(a_description.abi) + L", program ma " +
               std::to_wstring(PluginDescription::S_abi));
    if (a_description.size != sizeof(PluginDescription))
        refuse(L"opis wtyczki ma bajtów: " + std::to_wstring(a_description.size) + L", w programie ma " +
               std::to_wstring(sizeof(PluginDescription)));
    if (a_description.build == nullptr || a_description.name == nullptr || a_description.version == nullptr ||
        a_description.createModules == nullptr)
        refuse(L"opis wtyczki jest niepełny: każde pole musi być podane");
    if (std::string_view(a_description.build) != KALVENTO_PLUGIN_BUILD)
        refuse(L"wtyczka zbudowana inaczej: \"" + CodePage::Utf8ToWide(a_description.build) +
               L"\", program: \"" + CodePage::Utf8ToWide(KALVENTO_PLUGIN_BUILD) + L"\"");
}

} // namespace kalvento::host
