#pragma once

#include "file_provider/FileProviderSettings.h"
#include "file_provider/FileStore.h"
#include "provider_kit/StoreProvider.h"

#include <chrono>
#include <functional>
#include <string>

/// The provider "Pliki": serves what a folder holds, and plays back a recorded day of it.
class FileProvider : public StoreProvider {
public:
    using UserSettings = FileProviderSettings;
    static constexpr const wchar_t* S_name = L"Pliki";

    explicit FileProvider(const FileProviderSettings& a_settings) : FileProvider(a_settings.options) {}
    /// a_now: the clock of the playback; empty for the machine's (see FileStoreHost::now).
    explicit FileProvider(const FileStoreOptions& a_options,
                          std::function<std::chrono::steady_clock::time_point()> a_now = {});

    /// Says so where no folder was chosen.
    EStatusLevel GetStatusLevel() const override;
    std::wstring GetStatusLabel() const override;

    /// Its store, which lives as long as the provider.
    FileStore& GetFileStore() const;

private:
    bool m_hasFolder;
};
