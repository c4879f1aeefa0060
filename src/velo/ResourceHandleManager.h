#pragma once

#include "platform/Export.h"
#include "platform/Handles.h"

/// Selects the module that resources come from, on its thread and for the life of the object. The objects of a thread
/// end in the reverse order of their making, as scopes do.
class KALVENTO_API ResourceHandleManager {
public:
    explicit ResourceHandleManager(HINSTANCE a_module);
    ~ResourceHandleManager();
    ResourceHandleManager(const ResourceHandleManager&) = delete;
    ResourceHandleManager& operator=(const ResourceHandleManager&) = delete;

    /// The module selected on this thread; null, which is the main executable, where none is.
    static HINSTANCE GetCurrent();

private:
    HINSTANCE m_previous;
};
