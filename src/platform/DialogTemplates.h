#pragma once

#include "platform/DialogTemplate.h"
#include "platform/Export.h"

#include <string_view>

/// A table of dialog templates that can be found, for the life of the object: a static object in the module that the
/// table is part of. Templates are found by their module and number, so two modules may use the same numbers. Safe from
/// any thread; what was found is valid as long as its module is loaded.
class KALVENTO_API DialogTemplates {
public:
    /// a_table: static data of its module. Raises std::invalid_argument for a number 0 or one that the module has already,
    /// for two controls with one id, or for two default buttons in a dialog.
    explicit DialogTemplates(std::span<const DialogTemplate> a_table);
    ~DialogTemplates();
    DialogTemplates(const DialogTemplates&) = delete;
    DialogTemplates& operator=(const DialogTemplates&) = delete;

    /// Null where the module has none of that number. a_module: any address inside it, null for the main executable.
    static const DialogTemplate* Find(HINSTANCE a_module, UINT a_number);
    static const DialogTemplate* Find(HINSTANCE a_module, std::wstring_view a_name);

private:
    const DialogTemplate* m_table;
};
