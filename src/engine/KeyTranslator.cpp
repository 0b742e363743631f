#include "KeyTranslator.h"

#include "Logging.h"
#include "KeymapSource.h"

#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon.h>

namespace {
QString userLocale() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            return value;
    }
    return QStringLiteral("C");
}

bool isModifierKeysym(xkb_keysym_t keysym) {
    return (keysym >= XKB_KEY_Shift_L && keysym <= XKB_KEY_Hyper_R) ||
           (keysym >= XKB_KEY_ISO_Lock && keysym <= XKB_KEY_ISO_Last_Group_Lock) ||
           keysym == XKB_KEY_Mode_switch || keysym == XKB_KEY_Num_Lock;
}
} // namespace

KeyTranslator::KeyTranslator(KeymapSource& source, const QString& locale) : m_source(source) {
    m_context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    if (!m_context)
        return;
    const QByteArray wanted = (locale.isEmpty() ? userLocale() : locale).toUtf8();
    m_composeTable = xkb_compose_table_new_from_locale(m_context, wanted.constData(),
                                                       XKB_COMPOSE_COMPILE_NO_FLAGS);
    // C, POSIX and C.UTF-8 may have no table of their own; dead keys still need one.
    if (!m_composeTable)
        m_composeTable = xkb_compose_table_new_from_locale(m_context, "en_US.UTF-8",
                                                           XKB_COMPOSE_COMPILE_NO_FLAGS);
    if (m_composeTable)
        m_composeState = xkb_compose_state_new(m_composeTable, XKB_COMPOSE_STATE_NO_FLAGS);
}

KeyTranslator::~KeyTranslator() {
    xkb_state_unref(m_state);
    xkb_keymap_unref(m_stateKeymap);
    xkb_compose_state_unref(m_composeState);
    xkb_compose_table_unref(m_composeTable);
    xkb_context_unref(m_context);
}

std::optional<QString> KeyTranslator::fixedText(uint32_t keysym) {
    switch (keysym) {
    case XKB_KEY_BackSpace:
        return QString(QChar(0x08));
    case XKB_KEY_Delete:
    case XKB_KEY_KP_Delete:
        return QString(QChar(0x7F));
    case XKB_KEY_Return:
    case XKB_KEY_KP_Enter:
        return QString(QChar(0x0D));
    case XKB_KEY_Tab:
    case XKB_KEY_ISO_Left_Tab:
        return QString(QChar(0x09));
    case XKB_KEY_Escape:
        return QString(QChar(0x1B));
    case XKB_KEY_KP_Tab:
        return QString(QChar(0x09));
    case XKB_KEY_Left:
    case XKB_KEY_KP_Left:
        return QString(QChar(0x1C));
    case XKB_KEY_Right:
    case XKB_KEY_KP_Right:
        return QString(QChar(0x1D));
    case XKB_KEY_Up:
    case XKB_KEY_KP_Up:
        return QString(QChar(0x1E));
    case XKB_KEY_Down:
    case XKB_KEY_KP_Down:
        return QString(QChar(0x1F));
    case XKB_KEY_Home:
    case XKB_KEY_KP_Home:
    case XKB_KEY_End:
    case XKB_KEY_KP_End:
    case XKB_KEY_Prior:
    case XKB_KEY_KP_Prior:
    case XKB_KEY_Next:
    case XKB_KEY_KP_Next:
    case XKB_KEY_Begin:
    case XKB_KEY_KP_Begin:
    case XKB_KEY_Insert:
    case XKB_KEY_KP_Insert:
        return QString(QChar(caretKeyText));
    default:
        break;
    }
    if (keysym >= XKB_KEY_F1 && keysym <= XKB_KEY_F35)
        return QString(QChar(0x10));
    return std::nullopt;
}

uint32_t KeyTranslator::plainKeysym(uint32_t keyCode) {
    xkb_keymap* keymap = m_source.currentKeymap();
    if (!keymap)
        return XKB_KEY_NoSymbol;
    const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(keymap, keyCode);
    if (layouts == 0)
        return XKB_KEY_NoSymbol;
    // A key with fewer groups than the active one wraps around, as the server does.
    const xkb_layout_index_t layout = m_source.currentGroup() % layouts;
    const xkb_keysym_t* syms = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(keymap, keyCode, layout, 0, &syms);
    return count >= 1 ? syms[0] : XKB_KEY_NoSymbol;
}

uint32_t KeyTranslator::keysymIn(uint32_t keyCode, const KeyboardState& state, bool& chord) {
    chord = false;
    xkb_keymap* keymap = m_source.currentKeymap();
    if (!keymap)
        return XKB_KEY_NoSymbol;
    if (keymap != m_stateKeymap) {
        xkb_state_unref(m_state);
        xkb_keymap_unref(m_stateKeymap);
        m_stateKeymap = xkb_keymap_ref(keymap);
        m_state = xkb_state_new(keymap);
    }
    if (!m_state)
        return plainKeysym(keyCode);
    xkb_state_update_mask(m_state, state.baseMods, state.latchedMods, state.lockedMods, 0, 0,
                          state.group);
    for (const char* name : {XKB_MOD_NAME_CTRL, XKB_MOD_NAME_ALT, XKB_MOD_NAME_LOGO}) {
        const xkb_mod_index_t index = xkb_keymap_mod_get_index(keymap, name);
        if (index != XKB_MOD_INVALID &&
            xkb_state_mod_index_is_active(m_state, index, XKB_STATE_MODS_EFFECTIVE) > 0 &&
            xkb_state_mod_index_is_consumed(m_state, keyCode, index) == 0)
            chord = true;
    }
    return xkb_state_key_get_one_sym(m_state, keyCode);
}

bool KeyTranslator::isEscapeKey(uint32_t keyCode) {
    return plainKeysym(keyCode) == XKB_KEY_Escape;
}

bool KeyTranslator::isModifierKey(uint32_t keyCode) {
    return isModifierKeysym(plainKeysym(keyCode));
}

std::optional<QString> KeyTranslator::peekText(uint32_t keyCode, const KeyboardState& state) {
    if (!m_source.currentKeymap())
        return std::nullopt;
    bool chord = false;
    const xkb_keysym_t keysym = keysymIn(keyCode, state, chord);
    if (chord)
        return QString(QChar(chordText));
    if (auto fixed = fixedText(keysym))
        return fixed;
    const char32_t codePoint = xkb_keysym_to_utf32(keysym);
    if (codePoint == 0 || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return QString();
    return QString::fromUcs4(&codePoint, 1);
}

std::optional<QString> KeyTranslator::translateKeyCode(uint32_t keyCode,
                                                      const KeyboardState& state,
                                                      uint32_t& deadKeyState) {
    if (!m_source.currentKeymap()) {
        qCWarning(lcEngine).noquote() << QStringLiteral("No keyboard layout available");
        return std::nullopt;
    }

    bool chord = false;
    const xkb_keysym_t keysym = keysymIn(keyCode, state, chord);
    if (chord) {
        // The application runs a command; what it does to the text is not known here.
        if (m_composeState)
            xkb_compose_state_reset(m_composeState);
        deadKeyState = 0;
        return QString(QChar(chordText));
    }

    // The engine's word is the source of truth: whoever cleared it also ended the sequence.
    if (m_composeState && deadKeyState == 0 &&
        xkb_compose_state_get_status(m_composeState) != XKB_COMPOSE_NOTHING)
        xkb_compose_state_reset(m_composeState);

    QString text;
    bool composed = false;
    if (const auto fixed = fixedText(keysym)) {
        // Editing keys end any pending sequence and keep their own meaning.
        if (m_composeState)
            xkb_compose_state_reset(m_composeState);
        deadKeyState = 0;
        text = *fixed;
        composed = true;
    } else if (m_composeState && keysym != XKB_KEY_NoSymbol &&
               xkb_compose_state_feed(m_composeState, keysym) == XKB_COMPOSE_FEED_ACCEPTED) {
        switch (xkb_compose_state_get_status(m_composeState)) {
        case XKB_COMPOSE_COMPOSING:
            deadKeyState = 1;
            composed = true; // the empty text: the dead key waits for the next key
            break;
        case XKB_COMPOSE_COMPOSED: {
            char buffer[64] = {};
            xkb_compose_state_get_utf8(m_composeState, buffer, sizeof buffer);
            text = QString::fromUtf8(buffer);
            xkb_compose_state_reset(m_composeState);
            deadKeyState = 0;
            composed = true;
            break;
        }
        case XKB_COMPOSE_CANCELLED:
            // No character combines the two: the second key keeps its own text.
            xkb_compose_state_reset(m_composeState);
            deadKeyState = 0;
            break;
        case XKB_COMPOSE_NOTHING:
            deadKeyState = 0;
            break;
        }
    }

    if (!composed) {
        const uint32_t codePoint = xkb_keysym_to_utf32(keysym);
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
            qCInfo(lcKeys).noquote() << QStringLiteral("Key gives no character");
            return std::nullopt;
        }
        if (codePoint != 0) {
            const char32_t unit = codePoint;
            text = QString::fromUcs4(&unit, 1);
        }
    }

    qCInfo(lcKeys).noquote() << QStringLiteral("Key gives: ") + text;
    return text;
}
