#pragma once

class QCoreApplication;

// Typolet's texts in the user's language. The English catalogue comes first: it holds the
// plural forms ("1 snippet", "2 snippets") that the source texts leave open; a catalogue for
// the user's locale, and Qt's own for its standard dialogs, go over it when there is one.
class Translations {
public:
    static void install(QCoreApplication& application);
};
