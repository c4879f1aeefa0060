#pragma once

#include "platform/Export.h"
#include "styles/ISkinCatalogue.h"
#include "styles/StyleBase.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// The one way in to styles: makes a style of the name of its type, and owns the catalogue of skins.
///
/// The registry of types has no lock: fill it on the main thread at the start, before LoadStyles. What works on the
/// catalogue is safe from any thread; the lock is held throughout, during the work on files and the calls into modules
/// too, so a module must not come back from there. Without a catalogue those operations do nothing: they answer false or
/// an empty text and tell the log.
class KALVENTO_API StylesManager {
public:
    static StylesManager& Instance();

    /// a_typeName: what GetTypeName of the style gives. The creator of a name that is there already is replaced.
    /// The application and the modules register their types, those of the library too: nothing is there at the start.
    void RegisterInstanceCreator(const std::wstring& a_typeName, StyleBase::InstanceCreator a_creator);
    /// Drops every name of that creator. A plug-in that is going to be unloaded takes its types back.
    void RemoveInstanceCreator(StyleBase::InstanceCreator a_creator);
    /// Empty where the name is unknown.
    std::shared_ptr<StyleBase> CreateStyleFromClassName(const std::wstring& a_typeName) const;

    /// Takes the place of the catalogue so far, which is destroyed; null for none. The window library calls it at its
    /// start and end.
    void SetSkinCatalogue(std::unique_ptr<ISkinCatalogue> a_catalogue);

    /// Loads the skins below KalventoPaths::GetNativeStylesPath into the catalogue. False, with nothing touched, where
    /// that folder doesn't exist. This and SaveApplicationStyles raise as KalventoPaths::Instance does.
    bool LoadStyles();
    bool CheckIfApplicationStyleExist(const std::wstring& a_name) const;
    /// Makes a skin of the styles of these windows, one window a module.
    bool AddNewApplicationStyle(const std::wstring& a_name, const std::vector<ModuleWndBase*>& a_windows);
    /// False where there is no skin of that name. Its files stay. Not for the current skin.
    bool DeleteApplicationStyle(const std::wstring& a_name);
    bool SaveApplicationStyles() const;
    /// Makes the skin current and gives the modules its styles. Not while the catalogue is empty.
    void SetCurrentSkin(const std::wstring& a_name);
    /// File names of the current skin, once SetCurrentSkin has set one. The references are used outside of the lock:
    /// don't let that run beside AddNewApplicationStyle, DeleteApplicationStyle or SetSkinCatalogue.
    const std::wstring& GetCurrentStyleFile() const;
    const std::wstring& GetCurrentStyleIni() const;

    StylesManager(const StylesManager&) = delete;
    StylesManager& operator=(const StylesManager&) = delete;

private:
    StylesManager();
    ~StylesManager();

    mutable std::mutex m_mutex; // of the catalogue
    std::unique_ptr<ISkinCatalogue> m_catalogue;
    std::map<std::wstring, StyleBase::InstanceCreator> m_creators;
};
