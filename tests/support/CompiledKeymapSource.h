#pragma once

#include "KeymapSource.h"

#include <QString>

struct xkb_context;

// Keymaps compiled from xkb-data by layout name (or from keymap text), without any display.
// Tests switch the layout or the group between keys as a user would.
class CompiledKeymapSource : public KeymapSource {
public:
    // `layouts`, `variants` and `options` as setxkbmap takes them, e.g. "us,de", ",nodeadkeys"
    // and "grp:caps_toggle".
    explicit CompiledKeymapSource(const QString& layouts = QStringLiteral("us"),
                                  const QString& variants = {}, const QString& options = {});
    ~CompiledKeymapSource() override;
    CompiledKeymapSource(const CompiledKeymapSource&) = delete;
    CompiledKeymapSource& operator=(const CompiledKeymapSource&) = delete;

    xkb_keymap* currentKeymap() override { return m_keymap; }
    uint32_t currentGroup() override { return m_group; }

    // Replaces the keymap; false when it does not compile.
    bool load(const QString& layouts, const QString& variants = {}, const QString& options = {});
    bool loadText(const QString& keymapText);
    void unload();
    void setGroup(uint32_t group) { m_group = group; }
    // The keymap as text, as a compositor hands it to its clients.
    QByteArray text() const;
    // The name xkb-data gives its first layout, e.g. "German".
    QString layoutName() const;

private:
    xkb_context* m_context = nullptr;
    xkb_keymap* m_keymap = nullptr;
    uint32_t m_group = 0;
};
