#pragma once

#include "modules/ProviderSettings.h"

#include <string>

/// What the user chose for the provider of a database, in the file "Baza.xml". An absent key leaves what was there.
class SqlProviderSettings : public ProviderSettings {
public:
    static constexpr const char* XML_CONNECTION = "Connection";

    void WriteSettings(Settings& a_settings) const override;
    void ReadSettings(const Settings& a_settings) override;

    std::string connection; ///< As SqlAddress takes it, UTF-8. May hold a password.
};
