#include "ExpansionKeysyms.h"

#include <xkbcommon/xkbcommon.h>

QList<uint32_t> expansionKeysyms(const Expansion& actions) {
    QList<uint32_t> keysyms;
    for (const ExpansionAction& action : actions) {
        switch (action.kind) {
        case ExpansionAction::Kind::Erase:
            keysyms.append(QList<uint32_t>(action.count, XKB_KEY_BackSpace));
            continue;
        case ExpansionAction::Kind::MoveLeft:
            keysyms.append(QList<uint32_t>(action.count, XKB_KEY_Left));
            continue;
        case ExpansionAction::Kind::Type:
        case ExpansionAction::Kind::Paste:
            break;
        }
        const QList<uint> text = action.text.toUcs4();
        for (qsizetype i = 0; i < text.size(); ++i) {
            const char32_t c = text[i];
            if (c == u'\r' || c == u'\n') {
                if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                    ++i; // CR LF is one line break
                keysyms.append(XKB_KEY_Return);
            } else if (c == u'\t') {
                keysyms.append(XKB_KEY_Tab);
            } else if (c >= 0x20 && c != 0x7f) {
                if (const uint32_t keysym = xkb_utf32_to_keysym(c))
                    keysyms.append(keysym);
            }
        }
    }
    return keysyms;
}
