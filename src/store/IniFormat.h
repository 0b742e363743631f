#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

// The text of Typolet.conf, in the INI dialect QSettings reads and writes: keys in sections,
// each value escaped as QSettings escapes it. Typolet writes the file itself (so that every byte
// of a save can be checked before it replaces the library), and reads it itself (so that a 25 MB
// library is not parsed into UTF-16 and cached a second time by QSettings).
//
// A value is kept in its escaped form, as it stands after the `=`: a save writes the values that
// did not change exactly as they were read, and only a changed value is escaped anew.
class IniFormat {
public:
    // Escaped values by key; a key in a section other than [General] is "section/key".
    using Values = QMap<QString, QByteArray>;

    // The values of an INI text. Lines that are no `key=value` (comments, blank lines, stray
    // text) are passed over, as QSettings passes them over.
    static Values parse(QByteArray text);
    // The INI text of `values`: [General] first, then every other section.
    static QByteArray compose(const Values& values);

    // A value as it stands in the file. The types are those QSettings writes as text: byte
    // arrays as @ByteArray(...), strings, numbers and booleans as text, string lists as
    // comma-separated items; anything else is written as its string form.
    static QByteArray encode(const QVariant& value);
    // What QSettings gives back for an escaped value: a QByteArray, a QString, a QStringList,
    // or an invalid QVariant for @Invalid(). Values QSettings stores in binary form
    // (@Variant(...), @Rect(...)) come back as their text; Typolet never writes them.
    static QVariant decode(const QByteArray& escaped);
};
