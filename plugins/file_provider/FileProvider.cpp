#include "file_provider/FileProvider.h"

#include <memory>
#include <utility>

FileProvider::FileProvider(const FileStoreOptions& a_options,
                           std::function<std::chrono::steady_clock::time_point()> a_now)
    : StoreProvider(EGenericModuleNone, S_name, std::make_unique<FileStore>(a_options)),
      m_hasFolder(!a_options.folder.empty())
{
    FileStoreHost host;
    host.folderOf = [this](const std::string& a_name) { return GetHistorySymbolPath(a_name); };
    host.addToDo = [this](unsigned int a_count) { AddOperationsToDoToProgress(a_count); };
    host.setDone = [this](unsigned int a_count) { SetOperationsDidToProgress(a_count); };
    host.now = std::move(a_now);
    GetFileStore().SetHost(std::move(host));
}

// Without a folder it has nothing to do, and nobody need wait for it.
EStatusLevel FileProvider::GetStatusLevel() const
{
    return m_hasFolder ? StoreProvider::GetStatusLevel() : EStatusLevelIdle;
}

std::wstring FileProvider::GetStatusLabel() const
{
    return m_hasFolder ? StoreProvider::GetStatusLabel() : L"nie wskazano folderu";
}

FileStore& FileProvider::GetFileStore() const
{
    return static_cast<FileStore&>(GetStore());
}
