#include "WaylandKeymapSource.h"

#include "GnomeInputSources.h"
#include "WaylandConnection.h"

#include "Logging.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QRegularExpression>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace {
const QString kdeService = QStringLiteral("org.kde.keyboard");
const QString kdePath = QStringLiteral("/Layouts");
const QString kdeInterface = QStringLiteral("org.kde.KeyboardLayouts");

// KEY="value" lines of a shell-style configuration file such as /etc/default/keyboard.
QHash<QString, QString> readShellAssignments(const QString& path) {
    QHash<QString, QString> values;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return values;
    static const QRegularExpression assignment(
        QStringLiteral(R"re(^\s*([A-Z_]+)=(?:"([^"]*)"|'([^']*)'|(\S*)))re"));
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine());
        const QRegularExpressionMatch match = assignment.match(line);
        if (match.hasMatch())
            values.insert(match.captured(1),
                          match.captured(2) + match.captured(3) + match.captured(4));
    }
    return values;
}
} // namespace

struct WaylandKeymapSource::Wayland {
    std::unique_ptr<WaylandConnection> connection; // goes last, after what was bound on it
    WaylandKeymapSource* owner = nullptr;
    wl_keyboard* keyboard = nullptr;

    static void capabilities(void* data, wl_seat* seat, uint32_t capabilities) {
        auto* self = static_cast<Wayland*>(data);
        const bool hasKeyboard = capabilities & WL_SEAT_CAPABILITY_KEYBOARD;
        if (hasKeyboard && !self->keyboard) {
            self->keyboard = wl_seat_get_keyboard(seat);
            wl_keyboard_add_listener(self->keyboard, &keyboardListener, self);
        } else if (!hasKeyboard && self->keyboard) {
            self->releaseKeyboard();
        }
    }
    static void seatName(void*, wl_seat*, const char*) {}
    static constexpr wl_seat_listener seatListener{capabilities, seatName};

    static void keymap(void* data, wl_keyboard*, uint32_t format, int32_t fd, uint32_t size) {
        auto* self = static_cast<Wayland*>(data);
        if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 && size > 0) {
            void* map = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
            if (map != MAP_FAILED) {
                const char* text = static_cast<const char*>(map);
                self->owner->takeCompositorKeymap(QByteArray(text, qstrnlen(text, size)));
                munmap(map, size);
            }
        }
        close(fd);
    }
    static void enter(void*, wl_keyboard*, uint32_t, wl_surface*, wl_array*) {}
    static void leave(void*, wl_keyboard*, uint32_t, wl_surface*) {}
    static void key(void*, wl_keyboard*, uint32_t, uint32_t, uint32_t, uint32_t) {}
    static void modifiers(void* data, wl_keyboard*, uint32_t, uint32_t, uint32_t, uint32_t,
                          uint32_t group) {
        static_cast<Wayland*>(data)->owner->setCompositorGroup(group);
    }
    static void repeatInfo(void*, wl_keyboard*, int32_t, int32_t) {}
    static constexpr wl_keyboard_listener keyboardListener{keymap,    enter,     leave,
                                                           key,       modifiers, repeatInfo};

    void releaseKeyboard() {
        if (!keyboard)
            return;
        if (wl_keyboard_get_version(keyboard) >= WL_KEYBOARD_RELEASE_SINCE_VERSION)
            wl_keyboard_release(keyboard);
        else
            wl_keyboard_destroy(keyboard);
        keyboard = nullptr;
    }

    ~Wayland() { releaseKeyboard(); }
};

WaylandKeymapSource::WaylandKeymapSource(QObject* parent)
    : QObject(parent), m_context(xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES)) {}

WaylandKeymapSource::~WaylandKeymapSource() {
    disconnect();
    xkb_keymap_unref(m_compositorKeymap);
    xkb_keymap_unref(m_systemKeymap);
    xkb_keymap_unref(m_chosenKeymap);
    xkb_context_unref(m_context);
}

bool WaylandKeymapSource::connectToCompositor(const QString& display) {
    disconnect();
    auto wayland = std::make_unique<Wayland>();
    wayland->owner = this;
    wayland->connection = WaylandConnection::open(display);
    // The globals, then the seat's capabilities, then the keyboard's keymap: each answers the
    // requests the one before made. The compositor answers at once; this runs at start only.
    if (!wayland->connection || !wayland->connection->roundtrip())
        return false;
    if (wl_seat* seat = wayland->connection->seat())
        wl_seat_add_listener(seat, &Wayland::seatListener, wayland.get());
    for (int i = 0; i < 2; ++i)
        if (!wayland->connection->roundtrip())
            return false;
    m_wayland = std::move(wayland);
    m_wayland->connection->watch();
    connect(m_wayland->connection.get(), &WaylandConnection::lost, this, [this] {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("Lost the connection to the compositor; the keyboard layout stays "
                              "as it was");
        disconnect();
    }, Qt::QueuedConnection);
    if (!m_wayland->keyboard)
        qCInfo(lcEngine).noquote()
            << QStringLiteral("The compositor offers no keyboard yet; using the system's layout");
    return true;
}

void WaylandKeymapSource::disconnect() { m_wayland.reset(); }

void WaylandKeymapSource::followDesktopLayoutSwitches() {
    if (!m_gnome) {
        m_gnome = new GnomeInputSources(this);
        connect(m_gnome, &GnomeInputSources::groupChanged, this,
                &WaylandKeymapSource::setCompositorGroup);
        if (const auto group = m_gnome->currentGroup())
            setCompositorGroup(*group);
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(kdeService, kdePath, kdeInterface, QStringLiteral("layoutChanged"), this,
                SLOT(setCompositorGroup(uint)));
    auto* watcher = new QDBusPendingCallWatcher(
        bus.asyncCall(QDBusMessage::createMethodCall(kdeService, kdePath, kdeInterface,
                                                     QStringLiteral("getLayout"))),
        this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<uint> reply = *watcher;
        if (reply.isValid())
            setCompositorGroup(reply.value());
        watcher->deleteLater();
    });
}

void WaylandKeymapSource::setSystemConfigurationFile(const QString& path) {
    m_systemFile = path;
    xkb_keymap_unref(m_systemKeymap);
    m_systemKeymap = nullptr;
}

bool WaylandKeymapSource::setChosenLayout(const QString& name) {
    xkb_keymap* chosen = nullptr;
    if (!name.isEmpty()) {
        // "de(nodeadkeys)": the variant in parentheses after its layout.
        const qsizetype open = name.indexOf(u'(');
        const bool hasVariant = open > 0 && name.endsWith(u')');
        const QByteArray layout = (hasVariant ? name.left(open) : name).toUtf8();
        const QByteArray variant =
            hasVariant ? name.mid(open + 1, name.size() - open - 2).toUtf8() : QByteArray();
        const xkb_rule_names names{"evdev", "pc105", layout.constData(), variant.constData(),
                                   ""};
        chosen = xkb_keymap_new_from_names(m_context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
        if (!chosen)
            return false;
    }
    xkb_keymap_unref(m_chosenKeymap);
    m_chosenKeymap = chosen;
    m_group = 0;
    m_groupReported = false;
    emit changed();
    return true;
}

bool WaylandKeymapSource::takeCompositorKeymap(const QByteArray& text) {
    xkb_keymap* keymap = xkb_keymap_new_from_buffer(m_context, text.constData(),
                                                    size_t(text.size()), XKB_KEYMAP_FORMAT_TEXT_V1,
                                                    XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (!keymap) {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("The compositor's keymap could not be read; the layout stays as it "
                              "was");
        return false;
    }
    xkb_keymap_unref(m_compositorKeymap);
    m_compositorKeymap = keymap;
    if (m_group >= xkb_keymap_num_layouts(keymap))
        m_group = 0;
    emit changed();
    return true;
}

void WaylandKeymapSource::setCompositorGroup(uint group) {
    const bool first = !m_groupReported;
    m_groupReported = true;
    if (group == m_group && !first)
        return;
    m_group = group;
    emit changed();
}

std::optional<uint32_t> WaylandKeymapSource::reportedGroup() {
    if (!m_groupReported)
        return std::nullopt;
    return currentGroup();
}

xkb_keymap* WaylandKeymapSource::systemKeymap() {
    if (m_systemKeymap)
        return m_systemKeymap;
    QByteArray model, layout, variant, options;
    if (!qEnvironmentVariableIsEmpty("XKB_DEFAULT_LAYOUT")) {
        model = qgetenv("XKB_DEFAULT_MODEL");
        layout = qgetenv("XKB_DEFAULT_LAYOUT");
        variant = qgetenv("XKB_DEFAULT_VARIANT");
        options = qgetenv("XKB_DEFAULT_OPTIONS");
    } else {
        const QHash<QString, QString> values = readShellAssignments(m_systemFile);
        model = values.value(QStringLiteral("XKBMODEL")).toUtf8();
        layout = values.value(QStringLiteral("XKBLAYOUT")).toUtf8();
        variant = values.value(QStringLiteral("XKBVARIANT")).toUtf8();
        options = values.value(QStringLiteral("XKBOPTIONS")).toUtf8();
    }
    // Empty names take xkbcommon's defaults (pc105, us).
    const xkb_rule_names names{"evdev", model.constData(), layout.constData(),
                               variant.constData(), options.constData()};
    m_systemKeymap = xkb_keymap_new_from_names(m_context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (!m_systemKeymap) {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("The system's keyboard layout \"%1\" could not be compiled; using "
                              "the default")
                   .arg(QString::fromUtf8(layout));
        const xkb_rule_names defaults{"evdev", "", "", "", ""};
        m_systemKeymap =
            xkb_keymap_new_from_names(m_context, &defaults, XKB_KEYMAP_COMPILE_NO_FLAGS);
    }
    return m_systemKeymap;
}

WaylandKeymapSource::Origin WaylandKeymapSource::origin() const {
    if (m_chosenKeymap)
        return Origin::Chosen;
    return m_compositorKeymap ? Origin::Compositor : Origin::SystemConfiguration;
}

xkb_keymap* WaylandKeymapSource::currentKeymap() {
    if (m_chosenKeymap)
        return m_chosenKeymap;
    return m_compositorKeymap ? m_compositorKeymap : systemKeymap();
}

uint32_t WaylandKeymapSource::currentGroup() {
    xkb_keymap* keymap = currentKeymap();
    return keymap && m_group < xkb_keymap_num_layouts(keymap) ? m_group : 0;
}

QString WaylandKeymapSource::layoutName() {
    xkb_keymap* keymap = currentKeymap();
    if (!keymap)
        return {};
    const char* name = xkb_keymap_layout_get_name(keymap, currentGroup());
    return name ? QString::fromUtf8(name) : QString();
}
