#include "CompiledKeymapSource.h"

#include <xkbcommon/xkbcommon.h>

CompiledKeymapSource::CompiledKeymapSource(const QString& layouts, const QString& variants) {
    m_context = xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
    load(layouts, variants);
}

CompiledKeymapSource::~CompiledKeymapSource() {
    xkb_keymap_unref(m_keymap);
    xkb_context_unref(m_context);
}

bool CompiledKeymapSource::load(const QString& layouts, const QString& variants) {
    const QByteArray layout = layouts.toUtf8();
    const QByteArray variant = variants.toUtf8();
    const xkb_rule_names names{"evdev", "pc105", layout.constData(), variant.constData(), ""};
    unload();
    m_keymap = xkb_keymap_new_from_names(m_context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    m_group = 0;
    return m_keymap != nullptr;
}

bool CompiledKeymapSource::loadText(const QString& keymapText) {
    const QByteArray text = keymapText.toUtf8();
    unload();
    m_keymap = xkb_keymap_new_from_string(m_context, text.constData(), XKB_KEYMAP_FORMAT_TEXT_V1,
                                          XKB_KEYMAP_COMPILE_NO_FLAGS);
    m_group = 0;
    return m_keymap != nullptr;
}

void CompiledKeymapSource::unload() {
    xkb_keymap_unref(m_keymap);
    m_keymap = nullptr;
}
