#include "styles/StylesManager.h"

#include "platform/CodePage.h"
#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"
#include "velo/Path.h"
#include "velo/Refuse.h"
#include "velo/String.h"

#include <utility>

namespace {

// Where there is no catalogue, the log says so.
template<class Pointer>
bool IsThere(const Pointer& a_catalogue, std::string_view a_place, int a_line)
{
    return a_catalogue || kalvento::internal::Refuse(a_place, a_line, "Nie ma katalogu skór"_cp1250);
}

} // namespace

StylesManager::StylesManager() = default;
StylesManager::~StylesManager() = default;

StylesManager& StylesManager::Instance()
{
    static StylesManager manager;
    return manager;
}

void StylesManager::RegisterInstanceCreator(const std::wstring& a_typeName,
                                            StyleBase::InstanceCreator a_creator)
{
    m_creators.insert_or_assign(a_typeName, a_creator);
}

void StylesManager::RemoveInstanceCreator(StyleBase::InstanceCreator a_creator)
{
    std::erase_if(m_creators, [a_creator](const auto& a_entry) { return a_entry.second == a_creator; });
}

std::shared_ptr<StyleBase> StylesManager::CreateStyleFromClassName(const std::wstring& a_typeName) const
{
    const auto found = m_creators.find(a_typeName);
    return found != m_creators.end() ? found->second() : nullptr;
}

void StylesManager::SetSkinCatalogue(std::unique_ptr<ISkinCatalogue> a_catalogue)
{
    const std::scoped_lock lock(m_mutex);
    m_catalogue = std::move(a_catalogue);
}

bool StylesManager::LoadStyles()
{
    const std::scoped_lock lock(m_mutex);
    const std::wstring& folder = KalventoPaths::Instance().GetNativeStylesPath();
    return VeloTools::Path::DirectoryExist(WidePath::ToPath(folder)) &&
           IsThere(m_catalogue, "StylesManager::LoadStyles", __LINE__) && m_catalogue->Load();
}

bool StylesManager::CheckIfApplicationStyleExist(const std::wstring& a_name) const
{
    const std::scoped_lock lock(m_mutex);
    return IsThere(m_catalogue, "StylesManager::CheckIfApplicationStyleExist", __LINE__) &&
           m_catalogue->Exists(a_name);
}

bool StylesManager::AddNewApplicationStyle(const std::wstring& a_name,
                                           const std::vector<ModuleWndBase*>& a_windows)
{
    const std::scoped_lock lock(m_mutex);
    return IsThere(m_catalogue, "StylesManager::AddNewApplicationStyle", __LINE__) &&
           m_catalogue->AddStyle(a_name, a_windows);
}

bool StylesManager::DeleteApplicationStyle(const std::wstring& a_name)
{
    const std::scoped_lock lock(m_mutex);
    return IsThere(m_catalogue, "StylesManager::DeleteApplicationStyle", __LINE__) &&
           m_catalogue->Delete(a_name);
}

bool StylesManager::SaveApplicationStyles() const
{
    const std::scoped_lock lock(m_mutex);
    return IsThere(m_catalogue, "StylesManager::SaveApplicationStyles", __LINE__) && m_catalogue->Save();
}

void StylesManager::SetCurrentSkin(const std::wstring& a_name)
{
    const std::scoped_lock lock(m_mutex);
    if (IsThere(m_catalogue, "StylesManager::SetCurrentSkin", __LINE__))
        m_catalogue->SetCurrent(a_name);
}

const std::wstring& StylesManager::GetCurrentStyleFile() const
{
    const std::scoped_lock lock(m_mutex);
    return IsThere(m_catalogue, "StylesManager::GetCurrentStyleFile", __LINE__)
               ? m_catalogue->GetCurrentStyleFile()
               : VeloTools::String::EmptyWString();
}

const std::wstring& StylesManager::GetCurrentStyleIni() const
{
    const std::scoped_lock lock(m_mutex);
    return IsThere(m_catalogue, "StylesManager::GetCurrentStyleIni", __LINE__)
               ? m_catalogue->GetCurrentStyleIni()
               : VeloTools::String::EmptyWString();
}
