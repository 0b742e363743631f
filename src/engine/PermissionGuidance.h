#pragma once

#include <QString>

class PermissionAlertPresenter;
class PermissionProbe;

// Tells the user, once at start-up, which of the engine's two abilities the X server does not
// offer and what to do about it: seeing keys (the XInput 2 extension) and typing keys (the
// XTEST extension). In a Wayland session it also says that only X11 windows can be served.
class PermissionGuidance {
public:
    PermissionGuidance(PermissionProbe& probe, PermissionAlertPresenter& presenter);

    // Asks both questions; when either answer is no, schedules the alert so it shows once
    // start-up has finished. Returns whether an alert was scheduled.
    bool checkAndRequestPermissions();

    static QString title();
    // The bundled help page that explains each missing piece.
    static const QString helpUrl;

    static QString message(bool canSeeKeys, bool canTypeKeys, bool waylandSession);
    // XDG_SESSION_TYPE or WAYLAND_DISPLAY say so.
    static bool isWaylandSession();

private:
    PermissionProbe& m_probe;
    PermissionAlertPresenter& m_presenter;
};
