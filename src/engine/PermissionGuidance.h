#pragma once

#include <QString>

class PermissionAlertPresenter;
class PermissionProbe;

// Tells the user, once at start-up, which of the engine's two abilities is missing and how to
// get it: watching keys ("Input Monitoring") and typing keys ("Accessibility").
class PermissionGuidance {
public:
    PermissionGuidance(PermissionProbe& probe, PermissionAlertPresenter& presenter,
                       QString executablePath);

    // Asks both questions; when either answer is no, schedules the alert on the main queue so it
    // shows once start-up has finished. Returns whether an alert was scheduled.
    bool checkAndRequestPermissions();

    static const QString title;
    // The bundled help page that explains, for X11, what each missing piece means.
    static const QString settingsUrl;

    static QString message(bool inputMonitoringGranted, bool accessibilityGranted,
                           bool developerBuild);
    // A developer build is one run straight from a build folder.
    static bool isDeveloperBuild(const QString& executablePath);

private:
    PermissionProbe& m_probe;
    PermissionAlertPresenter& m_presenter;
    QString m_executablePath;
};
