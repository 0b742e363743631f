#include "WaylandVirtualKeyboardOutput.h"

#include "ExpansionKeysyms.h"
#include "WaylandConnection.h"
#include "Logging.h"
#include "virtual-keyboard-unstable-v1-client-protocol.h"

#include <QHash>
#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace {
// xkb keycodes start at 8; the keymap's keys are 9 and up, so key N is evdev code N - 8.
constexpr uint32_t firstKeyCode = 9;
constexpr uint32_t evdevOffset = 8;
} // namespace

struct WaylandVirtualKeyboardOutput::Wayland {
    std::unique_ptr<WaylandConnection> connection; // goes last, after what was bound on it
    zwp_virtual_keyboard_manager_v1* manager = nullptr;
    zwp_virtual_keyboard_v1* keyboard = nullptr;

    ~Wayland() {
        if (keyboard)
            zwp_virtual_keyboard_v1_destroy(keyboard);
        if (manager)
            zwp_virtual_keyboard_manager_v1_destroy(manager);
    }
};

WaylandVirtualKeyboardOutput::WaylandVirtualKeyboardOutput(QObject* parent) : QObject(parent) {
    m_stepTimer.setSingleShot(true);
    connect(&m_stepTimer, &QTimer::timeout, this, [this] { step(); });
    m_clock.start();
}

WaylandVirtualKeyboardOutput::~WaylandVirtualKeyboardOutput() {
    if (m_job) {
        m_job->finished = nullptr;
        finish();
    }
}

bool WaylandVirtualKeyboardOutput::connectToCompositor(const QString& display) {
    auto wayland = std::make_unique<Wayland>();
    Wayland* bound = wayland.get();
    wayland->connection = WaylandConnection::open(
        display, [bound](wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
            if (!bound->manager &&
                std::strcmp(interface, zwp_virtual_keyboard_manager_v1_interface.name) == 0)
                bound->manager = static_cast<zwp_virtual_keyboard_manager_v1*>(wl_registry_bind(
                    registry, name, &zwp_virtual_keyboard_manager_v1_interface, 1));
        });
    if (!wayland->connection || !wayland->connection->roundtrip() ||
        !wayland->connection->seat() || !wayland->manager)
        return false;
    // On the user's seat: the keys it types go where the user's own keys go.
    wayland->keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(
        wayland->manager, wayland->connection->seat());
    // A compositor may refuse (the protocol's "unauthorized"): that shows as an error here.
    if (!wayland->connection->roundtrip()) {
        qCInfo(lcEngine).noquote() << QStringLiteral("The compositor refused a virtual keyboard");
        return false;
    }
    m_wayland = std::move(wayland);
    m_wayland->connection->watch();
    connect(m_wayland->connection.get(), &WaylandConnection::lost, this, [this] {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("Lost the connection to the compositor; Typolet cannot type");
        lost();
    }, Qt::QueuedConnection);
    return true;
}

void WaylandVirtualKeyboardOutput::lost() {
    m_wayland.reset();
    if (m_job)
        finish();
}

void WaylandVirtualKeyboardOutput::setSessionActive(bool active) {
    m_sessionActive = active;
    if (!active && m_job)
        finish();
}

QByteArray WaylandVirtualKeyboardOutput::keymapFor(const QList<uint32_t>& keysyms) {
    const uint32_t last = firstKeyCode + uint32_t(keysyms.size()) - 1;
    QByteArray codes, symbols;
    for (qsizetype i = 0; i < keysyms.size(); ++i) {
        const QByteArray key = "<K" + QByteArray::number(firstKeyCode + uint32_t(i)) + '>';
        codes += "    " + key + " = " + QByteArray::number(firstKeyCode + uint32_t(i)) + ";\n";
        char name[64] = {};
        xkb_keysym_get_name(keysyms[i], name, sizeof name);
        symbols += "    key " + key + " { [ " + QByteArray(name) + " ] };\n";
    }
    // One level per key, so no modifier changes what a key gives; the standard types and
    // interpretations keep the keymap complete for every client.
    return "xkb_keymap {\n"
           "xkb_keycodes \"typolet\" {\n    minimum = 8;\n    maximum = " +
           QByteArray::number(std::max(last, firstKeyCode)) + ";\n" + codes +
           "};\n"
           "xkb_types \"typolet\" { include \"complete\" };\n"
           "xkb_compatibility \"typolet\" { include \"complete\" };\n"
           "xkb_symbols \"typolet\" {\n" +
           symbols + "};\n};\n";
}

void WaylandVirtualKeyboardOutput::perform(const Expansion& actions,
                                           std::function<void()> finished) {
    if (m_job)
        finish(); // one expansion at a time; the engine never asks for two
    m_job.emplace();
    m_job->keysyms = expansionKeysyms(actions);
    m_job->finished = std::move(finished);
    if (!m_sessionActive || !m_wayland) {
        qCWarning(lcEngine).noquote()
            << (m_sessionActive
                    ? QStringLiteral("Cannot type: the compositor's virtual keyboard is gone")
                    : QStringLiteral("Not typing: the session is not the active one"));
        finish();
        return;
    }
    step();
}

void WaylandVirtualKeyboardOutput::cancel() {
    if (m_job)
        m_job->keysyms.resize(m_job->next);
}

bool WaylandVirtualKeyboardOutput::uploadKeymapFor(qsizetype from) {
    Job& job = *m_job;
    // The keys of this part: as many distinct keysyms as a keymap holds, from `from` on.
    QList<uint32_t> keys;
    for (qsizetype i = from; i < job.keysyms.size(); ++i) {
        if (keys.contains(job.keysyms[i]))
            continue;
        if (keys.size() == keysPerKeymap)
            break;
        keys.append(job.keysyms[i]);
    }
    const QByteArray text = keymapFor(keys);
    const int fd = memfd_create("typolet-keymap", MFD_CLOEXEC);
    if (fd < 0 || ::write(fd, text.constData(), size_t(text.size()) + 1) != text.size() + 1) {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("Stopped typing: no memory for a keymap (%1)")
                   .arg(QString::fromLocal8Bit(std::strerror(errno)));
        if (fd >= 0)
            ::close(fd);
        return false;
    }
    zwp_virtual_keyboard_v1_keymap(m_wayland->keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, fd,
                                   uint32_t(text.size() + 1));
    ::close(fd); // sent with the request
    // Our keys are read without the user's modifiers and locks.
    zwp_virtual_keyboard_v1_modifiers(m_wayland->keyboard, 0, 0, 0, 0);
    job.keymap = keys;
    return true;
}

void WaylandVirtualKeyboardOutput::step() {
    if (!m_job || !m_wayland)
        return;
    Job& job = *m_job;
    // What the last batch left in the connection goes first: a compositor that is behind
    // gets the time it needs.
    if (wl_display_flush(m_wayland->connection->display()) < 0) {
        if (errno == EAGAIN) {
            m_stepTimer.start(batchIntervalMs);
            return;
        }
        qCWarning(lcEngine).noquote()
            << QStringLiteral("Lost the connection to the compositor; Typolet cannot type");
        QMetaObject::invokeMethod(
            this, [this] { lost(); }, Qt::QueuedConnection);
        return;
    }
    for (int taps = 0; taps < keysPerBatch && job.next < job.keysyms.size(); ++taps) {
        const uint32_t keysym = job.keysyms[job.next];
        qsizetype index = job.keymap.indexOf(keysym);
        if (index < 0) {
            if (!uploadKeymapFor(job.next)) {
                finish();
                return;
            }
            index = job.keymap.indexOf(keysym);
        }
        tap(firstKeyCode + uint32_t(index));
        ++job.next;
    }
    wl_display_flush(m_wayland->connection->display());
    if (job.next < job.keysyms.size()) {
        m_stepTimer.start(batchIntervalMs);
        return;
    }
    // Finished once the compositor has taken every key: it answers a sync after them.
    wl_callback* done = wl_display_sync(m_wayland->connection->display());
    static constexpr wl_callback_listener listener{[](void* data, wl_callback* callback, uint32_t) {
        wl_callback_destroy(callback);
        auto* self = static_cast<WaylandVirtualKeyboardOutput*>(data);
        if (self->m_job && self->m_job->next == self->m_job->keysyms.size())
            self->finish();
    }};
    wl_callback_add_listener(done, &listener, this);
    wl_display_flush(m_wayland->connection->display());
}

void WaylandVirtualKeyboardOutput::tap(uint32_t keyCode) {
    const uint32_t time = uint32_t(m_clock.elapsed());
    zwp_virtual_keyboard_v1_key(m_wayland->keyboard, time, keyCode - evdevOffset,
                                WL_KEYBOARD_KEY_STATE_PRESSED);
    zwp_virtual_keyboard_v1_key(m_wayland->keyboard, time, keyCode - evdevOffset,
                                WL_KEYBOARD_KEY_STATE_RELEASED);
}

void WaylandVirtualKeyboardOutput::finish() {
    m_stepTimer.stop();
    Job job = std::move(*m_job);
    m_job.reset();
    if (job.finished)
        QMetaObject::invokeMethod(this, job.finished, Qt::QueuedConnection);
}
