#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPalette>
#include <QPixmap>

// The colours, fonts and icons the shell's windows share. Colours come from the widget's
// palette so the windows follow the desktop's light or dark theme.
class ShellStyle {
public:
    // The desktop's accent (selection) colour.
    static QColor accent(const QPalette& palette);
    static QColor windowBackground(const QPalette& palette);
    // Text that supports the main text (version line, badge).
    static QColor secondaryLabel(const QPalette& palette);
    // Explanatory text under a setting.
    static QColor tertiaryLabel(const QPalette& palette);
    // The neutral gray of card borders and badges.
    static QColor gray();

    // The system font at a pixel size (window geometry is given in pixels, so are the fonts).
    static QFont font(int pixelSize, QFont::Weight weight = QFont::Normal);

    static QIcon applicationIcon();
    static QIcon trayIcon();
    // A freedesktop icon from the theme, or the bundled drawing when the theme has none.
    // Known names: "gearshape.fill", "arrow.triangle.2.circlepath", "text.bubble".
    static QIcon symbol(const QString& symbolName);

    // `icon` rendered at `size` as a silhouette in `color`.
    static QPixmap tinted(const QIcon& icon, QSize size, const QColor& color,
                          qreal devicePixelRatio);

    // `color` with its alpha multiplied by `opacity`.
    static QColor withOpacity(QColor color, qreal opacity);
};
