#pragma once

#include <QString>
#include <QStringView>

// The letter case of a typed command, carried over to the content of a snippet that matches
// the command's case. The first letter of the command decides (a command that starts with
// punctuation, such as ";sig", looks past it): a capital there capitalises the content's first
// letter, and a command of at least two letters typed all in capitals puts the content in
// capitals. Letters without case (Chinese, digits are no letters) leave the content as stored.
class CommandCase {
public:
    enum class Style { asStored, capitalised, capitals };

    static Style of(QStringView typed);

    // The content in that style. Applied to the text as it is typed, after placeholders are
    // filled, so it is the first letter the user sees that is capitalised.
    static QString applied(Style style, const QString& text);
    // The same for text in two parts (before and after the caret's place): the first letter
    // of both together is the one capitalised.
    static void apply(Style style, QString& before, QString& after);

    // The form in which commands that differ only in letter case are equal.
    static QString folded(QStringView text) { return text.toString().toCaseFolded(); }
    static bool differOnlyInCase(QStringView a, QStringView b) {
        return a.size() == b.size() && a != b && a.compare(b, Qt::CaseInsensitive) == 0;
    }

private:
    // Capitalises the first letter of `text`; false when it has none.
    static bool capitaliseFirstLetter(QString& text);
};
