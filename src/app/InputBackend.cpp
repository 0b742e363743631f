#include "InputBackend.h"

#include "Logging.h"

#include <QCoreApplication>

InputBackend::Choice InputBackend::choose(const QProcessEnvironment& environment) {
    const QString forced = environment.value(QStringLiteral("TYPOLET_BACKEND")).trimmed().toLower();
    if (forced == QLatin1String("x11") || forced == QLatin1String("evdev"))
        return {forced == QLatin1String("x11") ? Kind::X11 : Kind::Evdev,
                QCoreApplication::translate("InputBackend", "chosen by TYPOLET_BACKEND")};
    if (!forced.isEmpty())
        qCWarning(lcApp).noquote()
            << QCoreApplication::translate("InputBackend",
                                           "TYPOLET_BACKEND=%1 is not known (x11 or evdev); "
                                           "choosing by the session")
                   .arg(forced);
    // The session type comes first: an X11 session may have a nested Wayland compositor
    // running in it, and a Wayland session has DISPLAY set for XWayland.
    const QString session = environment.value(QStringLiteral("XDG_SESSION_TYPE"));
    if (session == QLatin1String("wayland"))
        return {Kind::Evdev, QCoreApplication::translate("InputBackend", "Wayland session")};
    if (session == QLatin1String("x11"))
        return {Kind::X11, QCoreApplication::translate("InputBackend", "X11 session")};
    if (!environment.value(QStringLiteral("WAYLAND_DISPLAY")).isEmpty())
        return {Kind::Evdev, QCoreApplication::translate("InputBackend", "WAYLAND_DISPLAY is set")};
    return {Kind::X11, QCoreApplication::translate("InputBackend", "no Wayland session found")};
}

QString InputBackend::name(Kind kind) {
    return kind == Kind::X11 ? QStringLiteral("x11") : QStringLiteral("evdev");
}
