#include "host/PluginTrial.h"

#include "host/TrialText.h"
#include "platform/CodePage.h"
#include "platform/FileStamp.h"
#include "platform/ModulePath.h"
#include "platform/RunProgram.h"
#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"
#include "velo/Log.h"
#include "velo/Path.h"

#include <string_view>
#include <utility>

namespace kalvento::host {

namespace {

using kalvento::internal::FileStamp;
using kalvento::internal::ProgramEnd;

constexpr const char* S_program = "kalvento_plugin_trial";
constexpr std::string_view S_rootName = "PluginTrials";
constexpr std::string_view XML_PASSED = "Passed";
constexpr std::string_view XML_AROUND = "Around";
constexpr std::string_view XML_FILE = "File";
constexpr std::string_view XML_STAMP = "Stamp";
constexpr std::string_view XML_NAME = "Name";
constexpr std::string_view XML_VERSION = "Version";

// What the user's folder is called, the name that the paths were made from.
std::wstring NameOfPaths()
{
    const std::wstring documents = VeloTools::Path::GetCurrentUserDocumentPath({}, {});
    const std::wstring& folder = KalventoPaths::Instance().GetNativeUserDocumentsPath();
    return folder.starts_with(documents + L'/') ? folder.substr(documents.size() + 1) : std::wstring();
}

// How a process ended that hasn't told that all is over.
std::wstring TellEnd(const ProgramEnd& a_end, std::chrono::milliseconds a_patience)
{
    const std::wstring number = std::to_wstring(a_end.number);
    switch (a_end.how) {
    case ProgramEnd::EExited:
        if (a_end.number == S_exitDescriptorsLost)
            return L"zamyka pliki, które do niej nie należą";
        return L"kończy program, w którym działa (kod " + number + L")";
    case ProgramEnd::EKilled:
        return L"wywołuje awarię programu (sygnał " + number + L")";
    case ProgramEnd::EOverdue:
        return L"nie wraca od " + std::to_wstring(a_patience.count()) + L" ms";
    case ProgramEnd::EGivenUp:
        return L"próbę przerwano";
    case ProgramEnd::ENotStarted:
        break;
    }
    return L"nie można jej wypróbować: błąd systemu " + number;
}

} // namespace

PluginTrial::PluginTrial(std::shared_ptr<const HostOptions> a_options, std::filesystem::path a_memory,
                         std::function<bool()> a_mayGoOn)
    : m_options(std::move(a_options)), m_memoryFile(std::move(a_memory)), m_mayGoOn(std::move(a_mayGoOn))
{
    const std::string around =
        FileStamp(ModulePath::GetLibrary()).value_or("") + ' ' + FileStamp(GetProgram()).value_or("");
    // What can't be read is tried again.
    if (!m_memory.LoadFromFile(WidePath::ToWide(m_memoryFile), S_rootName) ||
        static_cast<const std::string&>(m_memory[XML_AROUND]) != around)
        m_memory = Settings();
    m_memory[XML_AROUND] = around;
}

PluginTrial::~PluginTrial()
{
    if (m_isChanged)
        m_memory.SaveToFile(WidePath::ToWide(m_memoryFile), S_rootName);
}

std::filesystem::path PluginTrial::GetProgram() const
{
    return m_options->trialProgram.empty() ? ModulePath::GetLibrary().parent_path() / S_program
                                           : WidePath::ToPath(m_options->trialProgram);
}

PluginReport PluginTrial::Try(const std::filesystem::path& a_file, const std::string& a_stamp)
{
    const std::wstring file = WidePath::ToWide(a_file);
    const Settings& passed = std::as_const(m_memory)[XML_PASSED];
    for (auto entry = passed.begin_unnamed(); entry != passed.end_unnamed(); ++entry) {
        const Settings& known = *entry;
        if (static_cast<std::wstring>(known[XML_FILE]) != file ||
            static_cast<const std::string&>(known[XML_STAMP]) != a_stamp)
            continue;
        PluginReport report;
        report.path = a_file;
        report.name = static_cast<std::wstring>(known[XML_NAME]);
        report.version = static_cast<std::wstring>(known[XML_VERSION]);
        return report;
    }
    PluginReport report = Run(a_file);
    if (report.state == EPluginStateRunning)
        Remember(report, a_stamp);
    return report;
}

PluginReport PluginTrial::Run(const std::filesystem::path& a_file) const
{
    const TrialTask task{ModulePath::GetFile(nullptr), NameOfPaths(), a_file, *m_options};
    const ProgramEnd end =
        kalvento::internal::RunProgram(GetProgram(), TrialTaskText(task), m_options->callDeadline, m_mayGoOn);
    TrialAnswer answer = ReadTrialAnswer(end.answer);
    const bool hasCome = answer.report && end.how == ProgramEnd::EExited && end.number == 0;
    PluginReport report = hasCome ? std::move(*answer.report) : PluginReport();
    report.path = a_file;
    if (!hasCome) {
        report.name = answer.plugin.empty() ? CodePage::Utf8ToWide(a_file.stem().native()) : answer.plugin;
        report.state = EPluginStateFailed;
        report.phase = answer.phase.empty() ? L"ładowanie" : answer.phase;
        report.reason = TellEnd(end, m_options->callDeadline);
    }
    if (report.state != EPluginStateRunning)
        VeloTools::Log::Instance().Write("kalvento::host::PluginTrial", __LINE__,
                                         CodePage::WideToCp1250(L"Wtyczka " + report.name + L", próba, " +
                                                                report.phase + L": " + report.reason));
    return report;
}

void PluginTrial::Remember(const PluginReport& a_report, const std::string& a_stamp)
{
    const std::wstring file = WidePath::ToWide(a_report.path);
    const Settings old = std::as_const(m_memory)[XML_PASSED];
    Settings passed;
    for (auto entry = old.begin_unnamed(); entry != old.end_unnamed(); ++entry)
        if (static_cast<std::wstring>((*entry)[XML_FILE]) != file)
            passed.AddUnnamed() = *entry;
    Settings& entry = passed.AddUnnamed();
    entry[XML_FILE] = file;
    entry[XML_STAMP] = a_stamp;
    entry[XML_NAME] = a_report.name;
    entry[XML_VERSION] = a_report.version;
    m_memory[XML_PASSED] = passed;
    m_isChanged = true;
}

} // namespace kalvento::host
