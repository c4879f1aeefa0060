#pragma once

#include "settings/Settings.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The children of a node. They lie on the heap apart from it, so that a node moves without moving them.
struct Settings::Children {
    struct Named {
        std::string key;
        Settings node;
    };

    /// Null where there is no such key.
    Settings* Find(std::string_view a_key) const;
    /// The key must be new.
    Settings& Add(std::string_view a_key);

    std::vector<std::unique_ptr<Named>> named;   // in order of adding
    std::map<std::string_view, Settings*> index; // all of named, once they are many; else empty
    std::vector<Settings> unnamed;
    Children* nextToDestroy = nullptr; // a list while a tree is taken apart
};
