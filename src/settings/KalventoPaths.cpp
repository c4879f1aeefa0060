#include "settings/KalventoPaths.h"

#include "platform/WidePath.h"
#include "velo/Path.h"

#include <filesystem>

namespace {

// Modules show and test this text.
class BadOptionalAccess : public std::bad_optional_access {
public:
    const char* what() const noexcept override { return "Bad optional access"; }
};

std::wstring Join(const std::wstring& a_folder, std::wstring_view a_name)
{
    return WidePath::ToWide(WidePath::ToPath(a_folder) / WidePath::ToPath(a_name));
}

} // namespace

std::optional<KalventoPaths> KalventoPaths::m_pathManager;

KalventoPaths::KalventoPaths(std::wstring_view a_name)
    : m_binary(VeloTools::Path::GetModulePath(nullptr)),
      m_install(WidePath::ToWide(WidePath::ToPath(m_binary).parent_path())),
      m_data(Join(m_install, L"Data")),
      m_log(Join(m_install, L"Logs")),
      m_crash(Join(m_install, L"CrashReports")),
      m_styles(Join(m_install, L"Styles")),
      m_resources(Join(m_install, L"Resources")),
      m_amiBroker(Join(m_install, L"AmiBroker")),
      m_defaultSettings(Join(m_install, L"DefaultSettings")),
      m_userSettings(Join(m_install, L"UserSettings")),
      m_userDocuments(VeloTools::Path::GetCurrentUserDocumentPath(a_name, L"")),
      m_userDesktops(Join(m_userDocuments, L"Pulpity")),
      m_userWindows(Join(m_userDocuments, L"Okna")),
      m_userTemplates(Join(m_userDocuments, L"Szablony")),
      m_userQrl(Join(m_userDocuments, L"Formuły QRL"))
{
    CreateFolders();
}

void KalventoPaths::CreateFolders() const
{
    for (const std::wstring* const folder :
         {&m_data, &m_log, &m_crash, &m_userTemplates, &m_userSettings, &m_userDocuments})
        VeloTools::Path::CreateDirectoryIfNotExist(WidePath::ToPath(*folder));
}

void KalventoPaths::Initialize(std::wstring_view a_name)
{
    const std::wstring name(a_name); // may be a view of a path that dies with the old instance
    m_pathManager.reset();
    m_pathManager.emplace(name);
}

const KalventoPaths& KalventoPaths::Instance()
{
    if (!m_pathManager)
        throw BadOptionalAccess();
    return *m_pathManager;
}
