#pragma once

#include "platform/Export.h"

#include <atomic>
#include <map>
#include <string>

/// The state of drag and drop, one for the application: IAppMediator makes it and gives it out.
/// While a drag runs, no window of the terminal may activate, so windows and mediator ask here.
class KALVENTO_API DragDropManager {
public:
    /// Nothing is being dragged.
    DragDropManager();
    ~DragDropManager();

    /// Whether a drag is running. May be asked from any thread; everything else here belongs to the main thread.
    bool IsDropInProgress() const { return m_dropInProgress; }

    DragDropManager(const DragDropManager&) = delete;
    DragDropManager& operator=(const DragDropManager&) = delete;

private:
    [[maybe_unused]] bool m_dropAllowed = false; // whether what was last dragged in here could be dropped
    std::atomic<bool> m_dropInProgress = false;
    std::map<std::string, unsigned int> m_formats; // registered clipboard format by name of class
};
