#pragma once

#include "modules/EStatusLevel.h"
#include "platform/Export.h"

#include <string>

class CWnd;

/// What a module shows on the host's status bar: one field with a lamp, a name and a short text.
/// The host asks on the main thread: after Init, after each IAppMediator::NotifyChangeConnectionStatus, and as often as
/// it repaints. So the answers must be quick; the module keeps ready what a worker thread knows.
class KALVENTO_API IStatusProvider {
public:
    virtual ~IStatusProvider();

    /// False hides the field.
    virtual bool IsStatusVisible() const = 0;
    /// Whose status it is, as the user calls it.
    virtual std::wstring GetStatusName() const = 0;
    virtual EStatusLevel GetStatusLevel() const = 0;
    /// A word or two for the user: "połączony".
    virtual std::wstring GetStatusLabel() const = 0;
    /// The whole story for the mouse's tool tip, its lines separated by line feeds; empty for none. The first line says
    /// how it stands, each of the others something that hinders or fails.
    virtual std::wstring GetStatusToolTip() const = 0;

    /// A second text beside the first, such as a delay or a count; empty for none.
    virtual std::wstring GetAdditionalStatusLabel() const { return {}; }
    /// The user clicked the field; a_statusBar is the window to put a dialog or a menu over.
    virtual void ProcessStatusDoubleClick(CWnd* /*a_statusBar*/) {}
    virtual void ProcessStatusRightClick(CWnd* /*a_statusBar*/) {}
};
