#pragma once

#include "platform/Export.h"
#include "platform/Handles.h"

/// What a library knows of itself as a module of the process. Called when the library is attached and detached.
class KALVENTO_API DllData {
public:
    /// Remembers the module. False for a null handle, or while another module is remembered: then nothing changes, and
    /// the library must not be loaded.
    bool InitExtensionModule(HINSTANCE a_module);
    /// Forgets the module; without one, does nothing.
    void TermExtensionModule() { m_module = nullptr; }

    /// Null before InitExtensionModule and after TermExtensionModule.
    HINSTANCE GetModule() const { return m_module; }

private:
    HINSTANCE m_module = nullptr;
};
