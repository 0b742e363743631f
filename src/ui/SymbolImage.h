#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

// Symbols by name ("folder", "trash.circle.fill", ...). Each comes from the desktop's icon
// theme under its freedesktop name when the theme has it, and otherwise from the SVG drawn for
// Typolet and compiled into the program, so every symbol exists on every desktop.
class SymbolImage {
public:
    // The icon for a symbol name; a null icon for a name Typolet does not use.
    static QIcon icon(const QString& symbolName);

    // The symbol drawn in one colour (symbols are monochrome shapes, tinted like text), at
    // `pixelSize` logical pixels for a screen of `devicePixelRatio`.
    static QPixmap pixmap(const QString& symbolName, int pixelSize, const QColor& color,
                          qreal devicePixelRatio = 1.0);

    // Typolet's own pictures: the application and the tray.
    static QIcon applicationIcon();
    // Paused, the tray icon is drawn faded, as a disabled icon is.
    static QIcon trayIcon(bool paused = false);

    // `icon` rendered at `size` as a silhouette in `color`.
    static QPixmap tinted(const QIcon& icon, QSize size, const QColor& color,
                          qreal devicePixelRatio);

    // The freedesktop icon name a symbol is looked up under.
    static QString themeName(const QString& symbolName);
};
