#include "host/Plugin.h"

#include "host/CallModule.h"
#include "host/HostOptions.h"
#include "host/ModuleDirectory.h"
#include "modules/ConsumerBase.h"
#include "modules/PluginDescription.h"
#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "velo/Log.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <string_view>
#include <utility>

namespace kalvento::host {

namespace {

const std::wstring S_phaseLoading = L"ładowanie";
const std::wstring S_phaseMaking = L"tworzenie modułów";

// Why a plug-in isn't for this host.
struct Refusal {
    EPluginState state;
    std::wstring reason;
};

// The host went on without the plug-in, which has returned now.
struct TooLate {};

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

template<typename Module>
void StopAll(std::vector<Module*>& a_modules)
{
    for (; !a_modules.empty(); a_modules.pop_back())
        CallModule(*a_modules.back(), L"StopWork", [&] { a_modules.back()->StopWork(); });
}

} // namespace

Plugin::Plugin(std::filesystem::path a_path, std::shared_ptr<const HostOptions> a_options,
               std::shared_ptr<MainThreadExecutor> a_executor, std::shared_ptr<ModuleDirectory> a_directory)
    : m_path(std::move(a_path)),
      m_options(std::move(a_options)),
      m_directory(a_directory),
      m_modules(std::move(a_directory)),
      m_thread(std::move(a_executor))
{
    const std::string stem = m_path.stem().native();
    const auto& only = m_options->only;
    m_isWanted = only.empty() || std::ranges::find(only, stem) != only.end();
    m_report.path = m_path;
    m_report.name = CodePage::Utf8ToWide(stem);
}

Plugin::~Plugin()
{
    m_thread.End();
    DestroyConsumers();
    DestroyProviders();
    Unload();
}

void Plugin::Start()
{
    if (!RunStep(&Plugin::DoStart))
        return;
    for (ProviderBase* const provider : m_providers)
        m_directory->Enter(*provider);
}

void Plugin::StartConsumers()
{
    if (IsRunning() && RunStep(&Plugin::DoStartConsumers))
        for (ConsumerBase* const consumer : m_consumers)
            m_directory->Enter(*consumer);
    m_thread.End();
}

void Plugin::StopConsumers()
{
    if (!m_abandoned)
        StopAll(m_consumers);
}

void Plugin::StopProviders()
{
    if (!m_abandoned)
        StopAll(m_providers);
}

void Plugin::DestroyConsumers()
{
    if (!m_abandoned)
        m_modules.DestroyConsumers();
}

void Plugin::DestroyProviders()
{
    if (!m_abandoned)
        m_modules.DestroyProviders();
}

void Plugin::Unload()
{
    if (m_abandoned)
        return;
    m_description = nullptr;
    m_library.Unload();
}

bool Plugin::RunStep(void (Plugin::*a_step)())
{
    const auto deadline = std::chrono::steady_clock::now() + m_options->initDeadline;
    if (!m_thread.Run([self = shared_from_this(), a_step] { self->Guarded(a_step); }, deadline)) {
        const std::lock_guard lock(m_mutex);
        m_abandoned = true;
        m_blocksLoader = m_report.phase == S_phaseLoading;
        m_report.state = EPluginStateAbandoned;
        m_report.reason = L"nie wraca od " + std::to_wstring(m_options->initDeadline.count()) +
                          L" ms; program działa dalej bez tej wtyczki";
    }
    if (IsRunning())
        return true;

    WriteLog(__LINE__, L"Wtyczka " + m_report.name + L", " + m_report.phase + L": " + m_report.reason);
    Drop();
    return false;
}

// What it made is destroyed and unloaded at the end only: somebody may have found one, and an asset holds its provider
// by a bare pointer.
void Plugin::Drop()
{
    m_modules.Withdraw();
    StopConsumers();
    StopProviders();
    if (m_report.state == EPluginStateRefused)
        Unload();
}

void Plugin::Guarded(void (Plugin::*a_step)())
{
    try {
        (this->*a_step)();
        EnterPhase({});
    } catch (const TooLate&) {
        WriteLog(__LINE__, L"Wtyczka z pliku " + CodePage::Utf8ToWide(m_path.native()) +
                               L" wróciła po terminie; pozostaje odłączona");
    } catch (const Refusal& refusal) {
        Fail(refusal.state, refusal.reason);
    } catch (const std::exception& exception) {
        Fail(EPluginStateFailed, L"wyjątek: " + CodePage::Cp1250ToWide(exception.what()));
    } catch (...) {
        Fail(EPluginStateFailed, L"wyjątek nieznanego typu");
    }
}

void Plugin::Fail(EPluginState a_state, std::wstring a_reason)
{
    const std::lock_guard lock(m_mutex);
    if (m_abandoned)
        return;
    m_report.state = a_state;
    m_report.reason = std::move(a_reason);
}

void Plugin::EnterPhase(std::wstring a_phase)
{
    const std::lock_guard lock(m_mutex);
    if (m_abandoned)
        throw TooLate();
    m_report.phase = std::move(a_phase);
}

void Plugin::DoStart()
{
    EnterPhase(S_phaseLoading);
    Load();
    if (!m_isWanted)
        return;

    EnterPhase(S_phaseMaking);
    const auto options = m_options->pluginOptions.find(m_description->name);
    m_description->createModules(m_modules,
                                 options != m_options->pluginOptions.end() ? options->second : Settings());
    Init(m_modules.GetProviders(), m_providers);
}

void Plugin::DoStartConsumers()
{
    Init(m_modules.GetConsumers(), m_consumers);
}

template<typename Module>
void Plugin::Init(const std::vector<Module*>& a_modules, std::vector<Module*>& a_ready)
{
    for (Module* const module : a_modules) {
        EnterPhase(L"Init modułu " + module->GetName());
        if (!module->Init())
            throw Refusal{EPluginStateFailed, L"moduł odmówił pracy"};
        a_ready.push_back(module);
    }
}

void Plugin::Load()
{
    const std::string error = m_library.Load(m_path);
    if (!error.empty())
        throw Refusal{EPluginStateRefused, LoadError(m_path, error)};
    const auto* const description =
        static_cast<const PluginDescription*>(m_library.Find(PluginDescription::S_symbol));
    if (description == nullptr)
        throw Refusal{EPluginStateRefused, L"to nie jest wtyczka: brakuje symbolu " +
                                               CodePage::Utf8ToWide(PluginDescription::S_symbol)};
    CheckDescription(*description);

    const std::string_view name = description->name;
    const std::lock_guard lock(m_mutex);
    if (m_abandoned)
        throw TooLate();
    m_description = description;
    m_isWanted = m_isWanted || std::ranges::find(m_options->only, name) != m_options->only.end();
    m_report.name = CodePage::Utf8ToWide(name);
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
