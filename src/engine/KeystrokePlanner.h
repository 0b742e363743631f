#pragma once

#include <QHash>
#include <QList>
#include <QStringView>
#include <cstdint>

struct xkb_keymap;

// Works out which keys to press to type a text on the current layout.
//
// Characters that a key of the active group gives, alone or with Shift, are typed with that key
// and need no change to the keyboard mapping. Every other character goes on a spare keycode (a
// keycode without symbols), which has two slots: plain and with Shift. Bindings stay in place
// between texts, so typing the same unusual characters again needs no new mapping change.
//
// When the slots run out, the one whose character is needed furthest ahead is given up; but a
// keycode already pressed in the current batch is never rebound within it: clients read a key
// event with the mapping they hold when they get to it, so a keycode must not change meaning
// while its events may still be unread. Rebinding such a keycode starts a new batch, and the
// caller lets clients catch up between batches.
class KeystrokePlanner {
public:
    struct Stroke {
        uint32_t keyCode = 0;
        bool shift = false;
        friend bool operator==(const Stroke&, const Stroke&) = default;
    };
    // The new symbols of one spare keycode: plain and with Shift (0 for none).
    struct Binding {
        uint32_t keyCode = 0;
        uint32_t keysyms[2] = {0, 0};
        bool rebinds = false; // a slot that typed something else until now changes
        friend bool operator==(const Binding&, const Binding&) = default;
    };
    // The bindings are made (and confirmed) before the strokes are posted.
    struct Batch {
        QList<Binding> bindings;
        QList<Stroke> strokes;
    };
    struct Plan {
        QList<Batch> batches;
        uint32_t shiftKeyCode = 0; // 0 when the layout has no Shift key
        QList<char32_t> skipped;   // characters no keysym can express
    };

    // Brings the spare keycodes in line with `keymap` as the server has it now: the keycodes
    // without symbols plus those still carrying our bindings. A binding the keymap no longer
    // shows (a new layout was loaded, someone else remapped the key) is forgotten.
    void reconcile(xkb_keymap* keymap);
    const QList<uint32_t>& spareKeyCodes() const { return m_spares; }

    // The keycodes of `keymap` that carry no symbol in any group.
    static QList<uint32_t> emptyKeyCodes(xkb_keymap* keymap);

    Plan plan(xkb_keymap* keymap, uint32_t group, QStringView text);

    // The spare keycodes that carry one of our symbols now.
    QList<uint32_t> boundKeyCodes() const;
    void forgetBindings();

    // The keysym that types `codePoint`: Return for line breaks, Tab for tabs; 0 for none.
    static uint32_t keysymFor(char32_t codePoint);

private:
    // A slot is keycode * 2 + level (0 plain, 1 Shift).
    static uint32_t slotOf(uint32_t code, uint32_t level) { return code * 2 + level; }
    QHash<uint32_t, Stroke> layoutKeys(xkb_keymap* keymap, uint32_t group,
                                       uint32_t& shiftKeyCode) const;
    Binding bindingFor(uint32_t code) const;

    QList<uint32_t> m_spares;
    QList<uint32_t> m_leastRecentlyUsed; // slots, the front was used longest ago
    QHash<uint32_t, uint32_t> m_keysymOfSlot;
    QHash<uint32_t, uint32_t> m_slotOfKeysym;
};
