#pragma once

#include "KeyboardOutput.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <optional>


// Types through the compositor itself, on compositors that offer virtual keyboards to their
// clients (zwp_virtual_keyboard_manager_v1: sway and the other wlroots compositors). Unlike a
// kernel device, such a keyboard brings its own keymap, which Typolet writes for each text: one
// key per character the text needs, so any character can be typed (not only those of the
// user's layout), and neither the layout in use nor the locks or modifiers the user has on can
// change it: while our keyboard types, the compositor reads our keys with our keymap and our
// (empty) modifiers. No access to /dev/uinput is needed.
//
// A text with more distinct characters than a keymap's keys is typed in parts, a keymap each.
// Keys go out in batches on a timer, each batch flushed to the compositor, so the connection's
// buffer never overflows and Typolet's windows stay responsive.
class WaylandVirtualKeyboardOutput : public QObject, public KeyboardOutput {
    Q_OBJECT
public:
    explicit WaylandVirtualKeyboardOutput(QObject* parent = nullptr);
    ~WaylandVirtualKeyboardOutput() override;

    // Connects to the compositor (`display` as WAYLAND_DISPLAY takes it; empty for
    // WAYLAND_DISPLAY itself) and makes the virtual keyboard. False when no compositor answers
    // or it offers no virtual keyboards.
    bool connectToCompositor(const QString& display = {});
    bool isConnected() const { return m_wayland != nullptr; }

    // While the user's session is not the active one nothing is typed.
    void setSessionActive(bool active);

    void perform(const Expansion& actions, std::function<void()> finished) override;
    void cancel() override;

    // The keymap text that gives each of `keysyms` on a key of its own, the first on keycode 9.
    static QByteArray keymapFor(const QList<uint32_t>& keysyms);

    static constexpr int keysPerKeymap = 200;
    static constexpr int keysPerBatch = 32;
    static constexpr int batchIntervalMs = 4;

private:
    struct Wayland;
    struct Job {
        QList<uint32_t> keysyms; // every key to tap, in order
        qsizetype next = 0;
        std::function<void()> finished;
        QList<uint32_t> keymap; // the keysyms of the keymap in force
    };

    void step();
    bool uploadKeymapFor(qsizetype from);
    void tap(uint32_t keyCode);
    void finish();
    void lost();

    std::unique_ptr<Wayland> m_wayland;
    QTimer m_stepTimer;
    QElapsedTimer m_clock;
    std::optional<Job> m_job;
    bool m_sessionActive = true;
};
