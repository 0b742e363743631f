#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

class QPainter;
class QStyleOptionViewItem;
class QWidget;

// The few text styles and colours the editor views share. Sizes are in device-independent
// pixels; colours come from the widget's palette so light and dark themes both work.
class UiTheme {
public:
    // Text styles: the application's font family at fixed pixel sizes, so every view agrees.
    static QFont headline();    // list titles, section titles
    static QFont subheadline(); // secondary lines under a title
    static QFont caption();     // hints, counts, error lines
    static QFont title2();      // sheet titles
    static QFont body();
    static QFont system(int pixelSize, QFont::Weight weight = QFont::Normal);

    // The accent colour: the palette's highlight, which follows the desktop's choice.
    static QColor accent(const QWidget* widget);
    static QColor accent(const QPalette& palette);
    static QColor windowBackground(const QPalette& palette);
    // Text that supports the main text (version line, badge); explanatory text under a
    // setting. Opaque mixes of the palette's colours, so they follow light and dark themes.
    static QColor secondaryLabel(const QPalette& palette);
    static QColor tertiaryLabel(const QPalette& palette);
    // The neutral gray of card borders and badges.
    static QColor gray();
    // `color` with its alpha multiplied by `opacity`.
    static QColor withOpacity(QColor color, qreal opacity);
    // Secondary text: the palette's faded text colour, readable on light and dark backgrounds.
    static constexpr QPalette::ColorRole secondaryTextRole = QPalette::PlaceholderText;
    static QColor secondaryText(const QWidget* widget);
    static QColor red();
    static QColor green();
    static QColor orange(); // warnings
    // The faint outline around fields: gray at 20 % opacity.
    static QColor faintOutline();
    // The header and footer bands of the forms: the window colour shaded a little (darker on
    // light windows, lighter on dark ones) so the bands stand apart from the body.
    static QColor bandBackground(const QWidget* widget);

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

    // Sets the foreground (window text and text roles) of `widget` to `color`.
    static void setForeground(QWidget* widget, const QColor& color);
};
