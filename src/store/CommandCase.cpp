#include "CommandCase.h"

#include <QList>

CommandCase::Style CommandCase::of(QStringView typed) {
    bool firstSeen = false;
    bool firstIsCapital = false;
    int cased = 0;
    bool anyLower = false;
    for (const char32_t codePoint : typed.toUcs4()) {
        if (!QChar::isLetter(codePoint))
            continue;
        const bool capital = QChar::isUpper(codePoint) || QChar::isTitleCase(codePoint);
        const bool lower = QChar::isLower(codePoint);
        if (!firstSeen) {
            firstSeen = true;
            firstIsCapital = capital;
        }
        if (capital || lower)
            ++cased;
        anyLower = anyLower || lower;
    }
    if (!firstIsCapital)
        return Style::asStored;
    return cased >= 2 && !anyLower ? Style::capitals : Style::capitalised;
}

bool CommandCase::capitaliseFirstLetter(QString& text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool pair = text.at(i).isHighSurrogate() && i + 1 < text.size() &&
                          text.at(i + 1).isLowSurrogate();
        const char32_t codePoint =
            pair ? QChar::surrogateToUcs4(text.at(i), text.at(i + 1)) : text.at(i).unicode();
        if (!QChar::isLetter(codePoint)) {
            i += pair ? 1 : 0;
            continue;
        }
        // Title case, not upper case: "ǆ" begins a word as "ǅ".
        const char32_t title = QChar::toTitleCase(codePoint);
        text.replace(i, pair ? 2 : 1, QString::fromUcs4(&title, 1));
        return true;
    }
    return false;
}

QString CommandCase::applied(Style style, const QString& text) {
    QString before = text, after;
    apply(style, before, after);
    return before;
}

void CommandCase::apply(Style style, QString& before, QString& after) {
    switch (style) {
    case Style::asStored:
        return;
    case Style::capitals:
        // Full case mapping: "ß" becomes "SS", as in print.
        before = before.toUpper();
        after = after.toUpper();
        return;
    case Style::capitalised:
        if (!capitaliseFirstLetter(before))
            capitaliseFirstLetter(after);
        return;
    }
}
