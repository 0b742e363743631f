#pragma once

#include <QList>
#include <QString>

// The keyboard layouts that xkb-data describes (its rules file, evdev.xml), each with its
// variants, for a person to choose from.
class KeyboardLayoutCatalogue {
public:
    struct Entry {
        QString name;        // "de", or "de(nodeadkeys)" for a variant
        QString description; // "German", "German (no dead keys)"
    };

    // Sorted by description; empty when the file cannot be read.
    static QList<Entry> read(const QString& rulesFile = defaultRulesFile);

    static constexpr const char* defaultRulesFile = "/usr/share/X11/xkb/rules/evdev.xml";
};
