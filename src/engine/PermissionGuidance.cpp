#include "PermissionGuidance.h"

#include "PermissionAlertPresenter.h"
#include "PermissionProbe.h"

#include <QCoreApplication>

QString PermissionGuidance::title() {
    return QCoreApplication::translate("PermissionGuidance", "Typolet Cannot Reach the Keyboard");
}
const QString PermissionGuidance::helpUrl = QStringLiteral("qrc:/typolet/permissions.html");

PermissionGuidance::PermissionGuidance(PermissionProbe& probe, PermissionAlertPresenter& presenter)
    : m_probe(probe), m_presenter(presenter) {}

bool PermissionGuidance::isWaylandSession() {
    return qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

QString PermissionGuidance::message(bool canSeeKeys, bool canTypeKeys, bool waylandSession) {
    const auto mark = [](bool present) {
        return present ? QStringLiteral("✅") : QStringLiteral("❌");
    };
    QString text = QCoreApplication::translate(
        "PermissionGuidance", "Typolet needs two things from the X server to expand snippets:\n\n");
    text += mark(canSeeKeys) +
            QCoreApplication::translate("PermissionGuidance",
                                        " Seeing keys: the XInput 2 extension\n");
    text += mark(canTypeKeys) +
            QCoreApplication::translate("PermissionGuidance",
                                        " Typing keys: the XTEST extension\n\n");
    if (waylandSession)
        text += QCoreApplication::translate(
            "PermissionGuidance",
            "This is a Wayland session: here Typolet can only serve X11 (XWayland) windows. "
            "Log in to an X11 session to use it everywhere.\n\n");
    text += QCoreApplication::translate(
        "PermissionGuidance",
        "Most X servers offer both; a server started with \"-extension XTEST\", or a remote or "
        "nested display, may not. \"Open Help\" explains how to check and what to change. "
        "Start Typolet again afterwards.");
    return text;
}

bool PermissionGuidance::checkAndRequestPermissions() {
    // Both questions are asked every time, whatever the first answer.
    const bool canSeeKeys = m_probe.canObserveKeys();
    const bool canTypeKeys = m_probe.canPostKeys();
    if (canSeeKeys && canTypeKeys)
        return false;
    const QString text = message(canSeeKeys, canTypeKeys, isWaylandSession());
    PermissionAlertPresenter* presenter = &m_presenter;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [presenter, text] { presenter->showPermissionAlert(title(), text, helpUrl); },
        Qt::QueuedConnection);
    return true;
}
