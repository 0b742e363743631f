#include "InputCheck.h"

#include "ConsolePermissionAlert.h"
#include "EvdevEngineBackend.h"
#include "EvdevKeyboardFinder.h"
#include "EvdevPermissionProbe.h"
#include "WaylandKeymapSource.h"
#include "WaylandVirtualKeyboardOutput.h"
#include "KeymapSource.h"
#include "X11KeymapSource.h"
#include "X11PermissionProbe.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFileInfo>
#include <QTextStream>
#include <xkbcommon/xkbcommon.h>

QString InputCheck::yesNo(bool yes) { return yes ? tr("yes") : tr("no"); }

bool InputCheck::hasRemoteDesktopPortal() {
    // Asking the portal for the devices it can give starts it when it is not running yet; a
    // desktop whose portal has no remote desktop answers with an error.
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << QStringLiteral("org.freedesktop.portal.RemoteDesktop") << QStringLiteral("AvailableDeviceTypes");
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 5000);
    return reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty() &&
           (qvariant_cast<QDBusVariant>(reply.arguments().first()).variant().toUInt() & 1u);
}

QString InputCheck::layouts(KeymapSource& source) {
    xkb_keymap* keymap = source.currentKeymap();
    if (!keymap)
        return tr("none could be had");
    QStringList names;
    for (xkb_layout_index_t i = 0; i < xkb_keymap_num_layouts(keymap); ++i)
        names.append(QString::fromUtf8(xkb_keymap_layout_get_name(keymap, i)));
    const uint32_t group = source.currentGroup();
    if (group < uint32_t(names.size()) && names.size() > 1)
        names[group] += tr(" (in use)");
    return names.join(QStringLiteral(", "));
}

int InputCheck::run(QTextStream& out, const InputBackend::Choice& backend) {
    out << tr("Backend: %1 (%2)").arg(InputBackend::name(backend.kind), backend.reason) << '\n';
    bool works = false;
    if (backend.kind == InputBackend::Kind::Evdev) {
        ConsolePermissionAlert guidance;
        EvdevEngineBackend engine(guidance);
        works = evdev(out, engine);
    } else {
        works = x11(out);
    }
    out << (works ? tr("Typolet can see and type keys here.")
                  : tr("Typolet cannot expand snippets here until what is missing above is in place."))
        << '\n';
    out.flush();
    return works ? 0 : 1;
}

bool InputCheck::evdev(QTextStream& out, EvdevEngineBackend& engine) {
    const EvdevKeyboardFinder& finder = engine.keyboards();
    QStringList readable, locked;
    int unreadable = 0;
    const auto nodes = finder.scan();
    for (const auto& node : nodes) {
        if (node.usable())
            readable.append(QStringLiteral("\"%1\" (%2)").arg(node.name, node.path));
        else if (node.keyboard)
            locked.append(node.path);
        unreadable += node.readable ? 0 : 1;
    }
    if (!QFileInfo(finder.folder()).isDir())
        out << tr("Keyboards: none, %1 does not exist").arg(finder.folder()) << '\n';
    else
        out << tr("Keyboards: %1 found, %2 readable").arg(readable.size() + locked.size()).arg(readable.size())
            << '\n';
    for (const QString& keyboard : std::as_const(readable))
        out << tr("  readable: %1").arg(keyboard) << '\n';
    for (const QString& keyboard : std::as_const(locked))
        out << tr("  cannot be read: %1").arg(keyboard) << '\n';
    if (unreadable > locked.size())
        out << tr("Other input devices that cannot be read: %1").arg(unreadable - locked.size()) << '\n';

    EvdevPermissionProbe& probe = engine.permissions();
    const bool uinputWorks = probe.canPostKeys();
    if (uinputWorks)
        out << tr("Virtual keyboard: %1 is writable").arg(probe.uinputPath()) << '\n';
    else if (!QFileInfo::exists(probe.uinputPath()))
        out << tr("Virtual keyboard: %1 does not exist (sudo modprobe uinput loads it)").arg(probe.uinputPath())
            << '\n';
    else
        out << tr("Virtual keyboard: %1 is not writable").arg(probe.uinputPath()) << '\n';
    // The compositor's own virtual keyboards come first where it offers them, then the
    // desktop's remote desktop portal (which asks the user once).
    WaylandVirtualKeyboardOutput compositor;
    const bool compositorTypes = compositor.connectToCompositor();
    const bool portal = !compositorTypes && hasRemoteDesktopPortal();
    const auto typing = compositorTypes ? EvdevEngineBackend::Typing::Compositor
                        : portal        ? EvdevEngineBackend::Typing::Portal
                                        : EvdevEngineBackend::Typing::Uinput;
    out << tr("Typing: %1").arg(EvdevEngineBackend::typingDescription(typing));
    if (portal)
        out << tr(", once you allow it (through %1 until then)").arg(probe.uinputPath());
    out << '\n';
    const bool canType = compositorTypes || portal || uinputWorks;

    engine.keymaps().connectToCompositor(); // the system's configuration without one
    out << tr("Keymap: from %1; layouts: %2").arg(engine.keymapOrigin(), layouts(engine.keymaps()))
        << '\n';
    const bool canSee = !readable.isEmpty();
    out << tr("Seeing keys: %1. Typing keys: %2.").arg(yesNo(canSee), yesNo(canType)) << '\n';
    return canSee && canType;
}

bool InputCheck::x11(QTextStream& out) {
    const QString display = qEnvironmentVariable("DISPLAY");
    if (!X11PermissionProbe::openDisplay()) {
        out << tr("X display: cannot be opened (DISPLAY is \"%1\")").arg(display) << '\n';
        return false;
    }
    out << tr("X display: %1").arg(display) << '\n';
    X11PermissionProbe probe;
    const bool canSee = probe.canObserveKeys(), canType = probe.canPostKeys();
    X11KeymapSource keymaps;
    out << tr("Keymap: from the X server; layouts: %1").arg(layouts(keymaps)) << '\n';
    out << tr("Seeing keys (XInput 2): %1. Typing keys (XTEST): %2.").arg(yesNo(canSee), yesNo(canType))
        << '\n';
    return canSee && canType;
}
