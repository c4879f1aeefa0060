#include "modules/IGenericModule.h"

#include <utility>

namespace {

BookmarkFamilyType::Value FamilyOf(EGenericModule a_moduleKind)
{
    if (a_moduleKind < EGenericModuleFirstWithBookmarks || a_moduleKind > EGenericModuleLastWithBookmarks)
        return BookmarkFamilyType::FamilyNone;
    return static_cast<BookmarkFamilyType::Value>(a_moduleKind);
}

} // namespace

IGenericModule::IGenericModule(EGenericModule a_moduleKind, std::wstring a_name,
                               std::wstring a_stateFileExtension, std::wstring a_stateLoadFileFilter,
                               std::wstring a_stateSaveFileFilter)
    : m_moduleKind(a_moduleKind),
      m_bookmarkFamilyType(FamilyOf(a_moduleKind)),
      m_stateFileExtension(std::move(a_stateFileExtension)),
      m_stateLoadFileFilter(std::move(a_stateLoadFileFilter)),
      m_stateSaveFileFilter(std::move(a_stateSaveFileFilter)),
      m_name(std::move(a_name))
{}

IGenericModule::~IGenericModule() = default;

std::wstring IGenericModule::RegisterConsumerName(const std::wstring& a_nameTemplate)
{
    if (a_nameTemplate.empty())
        return {};

    std::wstring name = a_nameTemplate;
    // The window with the plain name is the first, so the next one is the second.
    for (unsigned int number = 2; !m_consumerNames.insert(name).second; ++number)
        name = a_nameTemplate + L" (" + std::to_wstring(number) + L')';
    return name;
}
