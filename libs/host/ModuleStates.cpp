#include "host/ModuleStates.h"

#include "modules/IGenericModule.h"
#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/FileTools.h"
#include "platform/WidePath.h"
#include "velo/Log.h"

#include <chrono>
#include <string_view>
#include <system_error>
#include <utility>

namespace kalvento::host {

namespace {

constexpr std::string_view S_rootName = "ModuleStates";
constexpr std::string_view XML_MODULES = "Modules";
constexpr std::string_view XML_NAME = "Name";
constexpr std::string_view XML_STATE = "State";

void WriteLog(int a_line, std::wstring_view a_text)
{
    VeloTools::Log::Instance().Write("kalvento::host::ModuleStates", a_line, CodePage::WideToCp1250(a_text));
}

std::wstring NameOf(const Settings& a_entry)
{
    return a_entry[XML_NAME];
}

} // namespace

ModuleStates::ModuleStates(std::filesystem::path a_file) : m_file(std::move(a_file))
{
    std::error_code error;
    const bool isThere = std::filesystem::exists(std::filesystem::symlink_status(m_file, error));
    const bool isRead = isThere && m_root.LoadFromFile(WidePath::ToWide(m_file), S_rootName);
    m_isNewer = isRead && m_root.m_version > S_version;
    if (isThere && !isRead) {
        m_mustKeepAside = true;
        KeepAside();
    } else if (m_isNewer) {
        m_notice = L"Ustawienia modułów zapisała nowsza wersja programu; pozostają nietknięte: " +
                   WidePath::ToWide(m_file);
        WriteLog(__LINE__, m_notice);
        m_root = Settings();
    }
    m_root.m_version = S_version;
    m_saved = m_root.SaveToBytes(S_rootName);
}

const Settings* ModuleStates::Find(const std::wstring& a_module) const
{
    const Settings& modules = m_root[XML_MODULES];
    for (auto entry = modules.begin_unnamed(); entry != modules.end_unnamed(); ++entry)
        if (NameOf(*entry) == a_module)
            return &(*entry)[XML_STATE];
    return nullptr;
}

void ModuleStates::GiveBack(IGenericModule& a_module)
{
    const Settings* const kept = Find(a_module.GetName());
    if (kept == nullptr || !kept->Exists())
        return;
    const int current = a_module.GetCurrentSettingsVersion();
    if (kept->m_version > current) {
        m_left.insert(a_module.GetName());
        WriteLog(__LINE__, L"Ustawienia modułu " + a_module.GetName() +
                               L" zapisała nowsza wersja; pozostają nietknięte");
        return;
    }
    const bool mustKeepAside = std::exchange(m_mustKeepAside, true); // until the module has taken them
    Settings converted;
    const bool isConverted =
        kept->m_version < current && a_module.UpdateOldVersionUserSettings(*kept, converted);
    a_module.UnserialiseState(isConverted ? converted : *kept);
    m_mustKeepAside = mustKeepAside;
}

void ModuleStates::Take(const IGenericModule& a_module)
{
    if (m_left.contains(a_module.GetName()))
        return;
    Settings state;
    a_module.SerialiseState(state);
    const bool isEmpty = state.ConvertToString() == Settings().ConvertToString();
    state.m_version = a_module.GetCurrentSettingsVersion();

    if (isEmpty && Find(a_module.GetName()) == nullptr)
        return;
    // The list can't be changed in its middle: it is made anew, with the others as they were.
    const Settings old = std::as_const(m_root)[XML_MODULES];
    Settings modules;
    bool isFound = false;
    for (auto entry = old.begin_unnamed(); entry != old.end_unnamed(); ++entry) {
        Settings& copy = modules.AddUnnamed() = *entry;
        if (NameOf(*entry) != a_module.GetName())
            continue;
        copy[XML_STATE] = state;
        isFound = true;
    }
    if (!isFound) {
        Settings& added = modules.AddUnnamed();
        added[XML_NAME] = a_module.GetName();
        added[XML_STATE] = state;
    }
    m_root[XML_MODULES] = modules;
}

bool ModuleStates::Save()
{
    if (m_isNewer)
        return false;
    const std::string bytes = m_root.SaveToBytes(S_rootName);
    if (bytes == m_saved)
        return true;
    if (m_mustKeepAside && !KeepAside())
        return false;
    if (!m_root.SaveToFile(WidePath::ToWide(m_file), S_rootName))
        return false;
    m_saved = bytes;
    return true;
}

bool ModuleStates::KeepAside()
{
    std::error_code error;
    const auto aside = FileTools::KeepAside(m_file, std::chrono::system_clock::now(), error);
    m_notice = aside
                   ? L"Nie można odczytać ustawień modułów; plik zachowano jako " + WidePath::ToWide(*aside)
                   : L"Nie można zachować nieczytelnego pliku ustawień modułów " + WidePath::ToWide(m_file) +
                         L": " + CodePage::Cp1250ToWide(kalvento::internal::ErrorText(error));
    WriteLog(__LINE__, m_notice);
    m_mustKeepAside = !aside;
    return aside.has_value();
}

} // namespace kalvento::host
