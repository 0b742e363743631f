#pragma once

#include <QString>

class PermissionAlertPresenter;
class PermissionProbe;

// Tells the user, once at start-up, which of the engine's two abilities is missing and what to
// do about it: seeing keys and typing keys. On X11 they are the XInput 2 and XTEST extensions
// (in a Wayland session it also says that only X11 windows can be served); through the kernel's
// input devices they are a readable keyboard node and a writable /dev/uinput, which Typolet's
// udev rule grants once and for all.
class PermissionGuidance {
public:
    enum class Backend { X11, KernelDevices };

    PermissionGuidance(PermissionProbe& probe, PermissionAlertPresenter& presenter,
                       Backend backend = Backend::X11);

    // Asks both questions; when either answer is no, schedules the alert so it shows once
    // start-up has finished. Returns whether an alert was scheduled.
    bool checkAndRequestPermissions();

    static QString title();
    // The bundled help page that explains each missing piece.
    static const QString helpUrl;

    static QString message(bool canSeeKeys, bool canTypeKeys, bool waylandSession);
    // `udevRule` is where the rule was installed.
    static QString kernelDevicesMessage(bool canSeeKeys, bool canTypeKeys,
                                        const QString& udevRule = installedUdevRule());
    static QString installedUdevRule();
    // XDG_SESSION_TYPE or WAYLAND_DISPLAY say so.
    static bool isWaylandSession();

private:
    PermissionProbe& m_probe;
    PermissionAlertPresenter& m_presenter;
    Backend m_backend;
};
