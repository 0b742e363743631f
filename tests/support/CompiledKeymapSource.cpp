#include "CompiledKeymapSource.h"

#include <cstdlib>
#include <xkbcommon/xkbcommon.h>

CompiledKeymapSource::CompiledKeymapSource(const QString& layouts, const QString& variants,
                                           const QString& options) {
    m_context = xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
    load(layouts, variants, options);
}

CompiledKeymapSource::~CompiledKeymapSource() {
    xkb_keymap_unref(m_keymap);
    xkb_context_unref(m_context);
}

bool CompiledKeymapSource::load(const QString& layouts, const QString& variants,
                                const QString& options) {
    const QByteArray layout = layouts.toUtf8(), variant = variants.toUtf8(), option = options.toUtf8();
    const xkb_rule_names names{"evdev", "pc105", layout.constData(), variant.constData(),
                               option.constData()};
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

QByteArray CompiledKeymapSource::text() const {
    char* text = m_keymap ? xkb_keymap_get_as_string(m_keymap, XKB_KEYMAP_FORMAT_TEXT_V1) : nullptr;
    const QByteArray result(text);
    std::free(text);
    return result;
}

QString CompiledKeymapSource::layoutName() const {
    return m_keymap ? QString::fromUtf8(xkb_keymap_layout_get_name(m_keymap, 0)) : QString();
}

void CompiledKeymapSource::unload() {
    xkb_keymap_unref(m_keymap);
    m_keymap = nullptr;
}
