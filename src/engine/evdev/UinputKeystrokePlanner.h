#pragma once

#include <QHash>
#include <QList>
#include <QStringView>
#include <cstdint>

struct xkb_keymap;

// Works out which keys a virtual keyboard presses to type a text through a keymap it cannot
// change.
//
// A kernel input device sends key codes only; the compositor reads them with the session's
// keymap. So, unlike on X11, there are no spare keycodes to bind: each character is typed with
// a key of the active group at whatever level gives it, together with the modifier keys that
// select that level (Shift, AltGr, the level-5 key). Which modifier keys select which level is
// found by pressing them on a model of the keyboard (an xkb_state) under the lock state and
// held modifiers the compositor applies, so Caps Lock, Num Lock and level locks are accounted
// for: with Caps Lock on, a lower-case letter is typed with Shift. Only a text that some lock
// makes impossible (Caps Lock turns ß into ẞ on a German layout) needs the locks cleared first,
// with the lock keys that lockKeysClearing() finds.
// Characters that no key gives are counted as missing, in order, so a caller can paste them.
class UinputKeystrokePlanner {
public:
    struct Stroke {
        uint32_t keyCode = 0;         // xkb keycode (evdev code + 8)
        QList<uint32_t> modifierKeys; // pressed before the key, released after it
        friend bool operator==(const Stroke&, const Stroke&) = default;
    };
    // One step of a plan: a key to press, or a run of characters no key gives.
    struct Step {
        Stroke stroke;
        QString missing; // not empty: these characters cannot be typed
    };
    // The state the compositor reads our keys with (the keymap's modifier masks).
    struct Conditions {
        uint32_t group = 0;
        uint32_t lockedMods = 0;
        uint32_t heldMods = 0; // held on the user's keyboard; cannot be released from ours
        friend bool operator==(const Conditions&, const Conditions&) = default;
    };

    // Uses `keymap` under `conditions` from now on (cheap when nothing changed).
    void setKeymap(xkb_keymap* keymap, const Conditions& conditions);

    QList<Step> plan(QStringView text) const;

    // The key that gives `keysym` plainly (BackSpace, Left); 0 when the keymap has none.
    uint32_t keyCodeOf(uint32_t keysym) const;
    // The lock keys whose taps clear the locks of `conditions`, as far as the keymap's lock
    // keys can (tapped again, they lock once more); `remaining` gets the locks left.
    static QList<uint32_t> lockKeysClearing(xkb_keymap* keymap, const Conditions& conditions,
                                            uint32_t& remaining);
    // Every key code a plan may press (for declaring the virtual device's keys).
    static QList<uint32_t> typableKeyCodes(xkb_keymap* keymap);

private:
    void build();

    xkb_keymap* m_keymap = nullptr;
    Conditions m_conditions;
    QHash<uint32_t, Stroke> m_strokeOfKeysym;
    // The same by character: a layout may give one under another keysym than the one
    // xkb_utf32_to_keysym() names (U2022 for the bullet, not enfilledcircbullet).
    QHash<char32_t, Stroke> m_strokeOfCharacter;
};
