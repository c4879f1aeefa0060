#pragma once

#include "file_provider/FileStoreOptions.h"
#include "modules/ProviderSettings.h"

/// What the user chose for the provider of files, in the file "Pliki.xml". An absent key leaves what was there.
class FileProviderSettings : public ProviderSettings {
public:
    static constexpr const char* XML_FOLDER = "Folder";
    static constexpr const char* XML_DAY = "Day";
    static constexpr const char* XML_SORT = "Sort";
    static constexpr const char* XML_SPEED = "Speed";
    static constexpr const char* XML_START = "Start";
    static constexpr const char* XML_LIST_ONLY = "ListOnly"; ///< Of one run: it isn't written.

    void WriteSettings(Settings& a_settings) const override;
    void ReadSettings(const Settings& a_settings) override;

    FileStoreOptions options;
};
