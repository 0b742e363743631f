#include "UinputKeystrokePlanner.h"

#include "KeystrokePlanner.h"

#include <xkbcommon/xkbcommon.h>

namespace {
// Keys whose only job is to select a level. Control, Alt and Super are never used: they would
// make the focused application read a shortcut.
bool selectsLevel(xkb_keysym_t keysym) {
    return keysym == XKB_KEY_Shift_L || keysym == XKB_KEY_Shift_R ||
           keysym == XKB_KEY_ISO_Level3_Shift || keysym == XKB_KEY_ISO_Level5_Shift;
}

// Keycodes up to 255 are preferred: windows of X11 programs (through XWayland) cannot receive
// higher ones. Past them, up to the kernel's KEY_MAX (0x2ff) plus the offset of 8.
constexpr uint32_t lastX11KeyCode = 255;
constexpr uint32_t lastKeyCode = 0x2ff + 8;

bool isLockKey(xkb_keysym_t keysym) {
    return keysym == XKB_KEY_Caps_Lock || keysym == XKB_KEY_Shift_Lock ||
           keysym == XKB_KEY_Num_Lock || keysym == XKB_KEY_ISO_Level3_Lock ||
           keysym == XKB_KEY_ISO_Level5_Lock;
}

xkb_state* stateUnder(xkb_keymap* keymap, const UinputKeystrokePlanner::Conditions& c) {
    xkb_state* state = xkb_state_new(keymap);
    if (state)
        xkb_state_update_mask(state, c.heldMods, 0, c.lockedMods, 0, 0, c.group);
    return state;
}
} // namespace

void UinputKeystrokePlanner::setKeymap(xkb_keymap* keymap, const Conditions& conditions) {
    if (keymap == m_keymap && conditions == m_conditions && !m_strokeOfKeysym.isEmpty())
        return;
    m_keymap = keymap;
    m_conditions = conditions;
    build();
}

QList<uint32_t> UinputKeystrokePlanner::typableKeyCodes(xkb_keymap* keymap) {
    QList<uint32_t> codes;
    if (!keymap)
        return codes;
    const uint32_t first = std::max<uint32_t>(xkb_keymap_min_keycode(keymap), 9);
    const uint32_t last = std::min<uint32_t>(xkb_keymap_max_keycode(keymap), lastKeyCode);
    for (uint32_t code = first; code <= last; ++code)
        if (xkb_keymap_num_layouts_for_key(keymap, code) > 0)
            codes.append(code);
    return codes;
}

void UinputKeystrokePlanner::build() {
    m_strokeOfKeysym.clear();
    m_strokeOfCharacter.clear();
    if (!m_keymap)
        return;
    const QList<uint32_t> codes = typableKeyCodes(m_keymap);

    // The level keys of the active group, one per distinct set of modifiers it brings in.
    QList<uint32_t> levelKeys;
    QList<xkb_mod_mask_t> levelMasks;
    for (const uint32_t code : codes) {
        xkb_state* state = stateUnder(m_keymap, m_conditions);
        if (!state)
            return;
        const xkb_keysym_t keysym = xkb_state_key_get_one_sym(state, code);
        if (selectsLevel(keysym)) {
            const xkb_mod_mask_t before = xkb_state_serialize_mods(state, XKB_STATE_MODS_DEPRESSED);
            xkb_state_update_key(state, code, XKB_KEY_DOWN);
            const xkb_mod_mask_t added =
                xkb_state_serialize_mods(state, XKB_STATE_MODS_DEPRESSED) & ~before;
            if (added != 0 && !levelMasks.contains(added)) {
                levelKeys.append(code);
                levelMasks.append(added);
            }
        }
        xkb_state_unref(state);
    }

    // Every combination of level keys, fewest first, so a key needing none always wins.
    QList<QList<uint32_t>> combinations{{}};
    for (const uint32_t key : std::as_const(levelKeys)) {
        const qsizetype count = combinations.size();
        for (qsizetype i = 0; i < count; ++i)
            combinations.append(combinations[i] + QList<uint32_t>{key});
    }
    std::stable_sort(combinations.begin(), combinations.end(),
                     [](const auto& a, const auto& b) { return a.size() < b.size(); });

    for (const bool x11Codes : {true, false}) {
        for (const QList<uint32_t>& combination : std::as_const(combinations)) {
            xkb_state* state = stateUnder(m_keymap, m_conditions);
            if (!state)
                return;
            for (const uint32_t key : combination)
                xkb_state_update_key(state, key, XKB_KEY_DOWN);
            for (const uint32_t code : codes) {
                if (levelKeys.contains(code) || (code <= lastX11KeyCode) != x11Codes)
                    continue;
                const xkb_keysym_t keysym = xkb_state_key_get_one_sym(state, code);
                if (keysym == XKB_KEY_NoSymbol || m_strokeOfKeysym.contains(keysym))
                    continue;
                m_strokeOfKeysym.insert(keysym, Stroke{code, combination});
                const char32_t character = xkb_keysym_to_utf32(keysym);
                if (character != 0 && !m_strokeOfCharacter.contains(character))
                    m_strokeOfCharacter.insert(character, Stroke{code, combination});
            }
            xkb_state_unref(state);
        }
    }
}

QList<uint32_t> UinputKeystrokePlanner::lockKeysClearing(xkb_keymap* keymap,
                                                         const Conditions& conditions,
                                                         uint32_t& remaining) {
    QList<uint32_t> keys;
    xkb_mod_mask_t& locked = remaining;
    locked = conditions.lockedMods;
    if (!keymap)
        return keys;
    for (const uint32_t code : typableKeyCodes(keymap)) {
        if (locked == 0)
            break;
        Conditions now = conditions;
        now.lockedMods = locked;
        xkb_state* state = stateUnder(keymap, now);
        if (!state)
            break;
        if (isLockKey(xkb_state_key_get_one_sym(state, code))) {
            xkb_state_update_key(state, code, XKB_KEY_DOWN);
            xkb_state_update_key(state, code, XKB_KEY_UP);
            const xkb_mod_mask_t after = xkb_state_serialize_mods(state, XKB_STATE_MODS_LOCKED);
            if ((after & ~locked) == 0 && after != locked) {
                keys.append(code);
                locked = after;
            }
        }
        xkb_state_unref(state);
    }
    return keys;
}

uint32_t UinputKeystrokePlanner::keyCodeOf(uint32_t keysym) const {
    const auto it = m_strokeOfKeysym.constFind(keysym);
    return it != m_strokeOfKeysym.cend() && it->modifierKeys.isEmpty() ? it->keyCode : 0;
}

QList<UinputKeystrokePlanner::Step> UinputKeystrokePlanner::plan(QStringView text) const {
    QList<Step> steps;
    const QList<uint> all = text.toUcs4();
    for (qsizetype i = 0; i < all.size(); ++i) {
        const char32_t codePoint = all[i];
        if (codePoint == U'\n' && i > 0 && all[i - 1] == U'\r')
            continue; // CR LF is one line break
        const uint32_t keysym = KeystrokePlanner::keysymFor(codePoint);
        if (const auto found = m_strokeOfKeysym.constFind(keysym);
            keysym != XKB_KEY_NoSymbol && found != m_strokeOfKeysym.cend()) {
            steps.append(Step{*found, {}});
            continue;
        }
        if (const auto found = m_strokeOfCharacter.constFind(codePoint);
            found != m_strokeOfCharacter.cend()) {
            steps.append(Step{*found, {}});
            continue;
        }
        if (steps.isEmpty() || steps.last().missing.isEmpty())
            steps.append(Step{});
        steps.last().missing.append(QString::fromUcs4(&codePoint, 1));
    }
    return steps;
}
