#include "PermissionGuidance.h"

#include "PermissionAlertPresenter.h"
#include "PermissionProbe.h"

#include <QCoreApplication>

QString PermissionGuidance::title() {
    return QCoreApplication::translate("PermissionGuidance", "Typolet Cannot Reach the Keyboard");
}
const QString PermissionGuidance::helpUrl = QStringLiteral("qrc:/typolet/permissions.html");

PermissionGuidance::PermissionGuidance(PermissionProbe& probe, PermissionAlertPresenter& presenter,
                                       Backend backend)
    : m_probe(probe), m_presenter(presenter), m_backend(backend) {}

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

QString PermissionGuidance::installedUdevRule() {
    return QStringLiteral(TYPOLET_UDEV_RULE);
}

QString PermissionGuidance::kernelDevicesMessage(bool canSeeKeys, bool canTypeKeys,
                                                 const QString& udevRule) {
    const auto mark = [](bool present) {
        return present ? QStringLiteral("✅") : QStringLiteral("❌");
    };
    QString text = QCoreApplication::translate(
        "PermissionGuidance",
        "In this Wayland session Typolet watches and types keys through the kernel's input "
        "devices, and needs access to two of them:\n\n");
    text += mark(canSeeKeys) +
            QCoreApplication::translate("PermissionGuidance",
                                        " Seeing keys: reading a keyboard under /dev/input\n");
    text += mark(canTypeKeys) +
            QCoreApplication::translate(
                "PermissionGuidance", " Typing keys: writing to /dev/uinput (Typolet's virtual keyboard)\n\n");
    text += QCoreApplication::translate(
        "PermissionGuidance",
        "Typolet's udev rule grants both to the user logged in at this seat, with no group "
        "change and no new login. The one-time fix, in a terminal:\n\n");
    // udev reads rules from /usr/lib and /etc, not from a /usr/local installation.
    const bool ruleIsRead = udevRule.startsWith(QLatin1String("/usr/lib/")) ||
                            udevRule.startsWith(QLatin1String("/lib/")) ||
                            udevRule.startsWith(QLatin1String("/etc/"));
    if (!ruleIsRead)
        text += QStringLiteral("sudo install -m 644 %1 /etc/udev/rules.d/\n").arg(udevRule);
    // Where uinput is a module, /dev/uinput exists before the module is loaded, and the node
    // gets the rule's tag only once it is: loading it is always part of the fix (and harmless
    // when it is loaded or built in). The file under /etc/modules-load.d/ loads it at boot.
    text += QStringLiteral("sudo modprobe uinput\n"
                           "echo uinput | sudo tee /etc/modules-load.d/typolet-uinput.conf\n");
    text += QStringLiteral("sudo udevadm control --reload-rules\n"
                           "sudo udevadm trigger\n\n");
    text += QCoreApplication::translate(
        "PermissionGuidance",
        "\"Open Help\" explains what the rule grants. Start Typolet again afterwards.");
    return text;
}

bool PermissionGuidance::checkAndRequestPermissions() {
    // Both questions are asked every time, whatever the first answer.
    const bool canSeeKeys = m_probe.canObserveKeys();
    const bool canTypeKeys = m_probe.canPostKeys();
    if (canSeeKeys && canTypeKeys)
        return false;
    const QString text = m_backend == Backend::KernelDevices
                             ? kernelDevicesMessage(canSeeKeys, canTypeKeys)
                             : message(canSeeKeys, canTypeKeys, isWaylandSession());
    PermissionAlertPresenter* presenter = &m_presenter;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [presenter, text] { presenter->showPermissionAlert(title(), text, helpUrl); },
        Qt::QueuedConnection);
    return true;
}
