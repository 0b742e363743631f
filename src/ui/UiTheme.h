#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>

class QLabel;
class QPainter;
class QStyleOptionViewItem;

// What the editor's painted rows and its few styled labels share. Fonts derive from the
// desktop's font and colours from the palette, so the desktop's choices, light or dark, hold.
class UiTheme {
public:
    // The desktop's font in bold: list titles, form titles.
    static QFont titleFont();
    // The desktop's font a step smaller: hints, counts, the line under a title.
    static QFont smallFont();
    // A hint or other small label: smaller, in the ordinary text colour (so it always reads).
    static QLabel* smallLabel(const QString& text, QWidget* parent);

    // The second line of a painted row: the text colour mixed towards the background, as far
    // as it still reads at 4.5:1.
    static QColor secondaryText(const QPalette& palette);

    // The contrast ratio of two colours (1 to 21), as accessibility guidelines measure it.
    static double contrast(const QColor& a, const QColor& b);
    // `color` moved towards black or white, as little as it takes to read on `background` at
    // `needed`:1 (4.5 for text); a colour that reads already is returned as it is.
    static QColor readable(const QColor& color, const QColor& background, double needed = 4.5);
    // The fill of a selected row: the palette's highlight, deepened where the highlighted
    // text would not read on it.
    static QColor selectionFill(const QPalette& palette);

    // The keyboard focus on a list row: an outline inside the row, drawn only while the list
    // has the focus.
    static void drawRowFocus(QPainter* painter, const QStyleOptionViewItem& option);

    // `text` as one line (line breaks and tabs as spaces), cut after `limit` characters with
    // an ellipsis: what a one-line label can show, cheap to lay out however long the text.
    static QString oneLine(const QString& text, qsizetype limit = 400);
};
