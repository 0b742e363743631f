#pragma once

#include "KeyboardState.h"

#include <QString>
#include <cstdint>
#include <optional>

class KeymapSource;
struct xkb_context;
struct xkb_compose_table;
struct xkb_compose_state;
struct xkb_keymap;
struct xkb_state;

// Turns the key code of a key-down into the text that the focused application reads from it:
// the keysym at the level that the key's modifier and lock state selects (Shift, Caps Lock,
// AltGr, Num Lock on the keypad), so commands with capitals or shifted symbols match on every
// layout. A key pressed with Control, Alt or Super is a command to the application, not text:
// it gives the cancel text U+0018.
//
// Dead keys compose through the compose table of the user's locale: a dead key alone gives the
// empty text and leaves the engine's dead-key state set; the next key gives the composed
// character. The keymap and group are read from the source on every key, so a layout switch or a
// new keymap is used from the next key on.
class KeyTranslator {
public:
    // `locale` picks the compose table; empty means the user's locale from the environment.
    explicit KeyTranslator(KeymapSource& source, const QString& locale = {});
    ~KeyTranslator();
    KeyTranslator(const KeyTranslator&) = delete;
    KeyTranslator& operator=(const KeyTranslator&) = delete;

    // The key's text, possibly empty; nothing when the key could not be translated (the reason
    // has been written). `deadKeyState` is non-zero while a dead-key sequence is pending.
    std::optional<QString> translateKeyCode(uint32_t keyCode, const KeyboardState& state,
                                            uint32_t& deadKeyState);

    // The text the key would give, without feeding the dead-key sequence: for a look at a key
    // that will be translated for real when it reaches the application.
    std::optional<QString> peekText(uint32_t keyCode, const KeyboardState& state);

    // The text of a key chord that the application takes as a command (Control+S, Alt+F).
    static constexpr char16_t chordText = 0x18;
    // The text of Home, End, Page Up, Page Down, Begin and Insert (and their keypad forms):
    // the caret goes elsewhere, or (Shift+Insert) text arrives that was not typed.
    static constexpr char16_t caretKeyText = 0x11;

    // True for keys whose plain symbol is a modifier (Shift, Control, AltGr, Caps Lock...):
    // pressing one alone is not typing.
    bool isModifierKey(uint32_t keyCode);
    // True for the key whose plain symbol is Escape.
    bool isEscapeKey(uint32_t keyCode);

    // The texts that editing and navigation keys give, whatever the layout: BackSpace U+0008,
    // Delete U+007F, Return and KP_Enter U+000D, Tab U+0009, Escape U+001B, arrows
    // U+001C..U+001F (keypad arrows too), Home, End, Page Up/Down, Begin, Insert U+0011,
    // F1..F35 U+0010.
    static std::optional<QString> fixedText(uint32_t keysym);

    bool hasComposeTable() const { return m_composeState != nullptr; }

private:
    uint32_t plainKeysym(uint32_t keyCode);
    // The keysym at the level `state` selects; sets `chord` when a command modifier is in force
    // that the key does not use for its level.
    uint32_t keysymIn(uint32_t keyCode, const KeyboardState& state, bool& chord);

    KeymapSource& m_source;
    xkb_context* m_context = nullptr;
    xkb_compose_table* m_composeTable = nullptr;
    xkb_compose_state* m_composeState = nullptr;
    xkb_keymap* m_stateKeymap = nullptr; // the keymap m_state was made for
    xkb_state* m_state = nullptr;
};
