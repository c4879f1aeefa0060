#include "history_operations/HistoryPathManager.h"

#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"
#include "velo/Path.h"
#include "velo/String.h"

#include <filesystem>

namespace {

std::filesystem::path JoinAndCreate(const std::wstring& a_folder, std::wstring_view a_name)
{
    std::filesystem::path path = WidePath::ToPath(a_folder) / WidePath::ToPath(a_name);
    VeloTools::Path::CreateDirectoryIfNotExist(path);
    return path;
}

} // namespace

void HistoryPathManager::InitPaths(std::wstring_view a_folder)
{
    m_historyPath = WidePath::ToWide(JoinAndCreate(KalventoPaths::Instance().GetNativeDataPath(),
                                                   a_folder.substr(0, a_folder.find(L'\0'))));
}

std::wstring HistoryPathManager::GetHistorySymbolPath(const std::string& a_symbol) const
{
    return WidePath::ToWide(JoinAndCreate(m_historyPath, VeloTools::String::AnsiToWide(a_symbol)));
}

std::wstring HistoryPathManager::GetOperationFilePath(const std::string& a_symbol) const
{
    return WidePath::ToWide(WidePath::ToPath(GetHistorySymbolPath(a_symbol)) / "DataOperation.xml");
}
