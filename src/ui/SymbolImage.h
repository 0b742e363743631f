#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

// Icons by their freedesktop name ("folder", "edit-delete", ...): from the desktop's icon theme
// when it has the name, otherwise from the SVG drawn for Typolet and compiled into the program
// under the same name, so every icon the editor uses exists on every desktop.
class SymbolImage {
public:
    // The theme's icon, or the bundled one; a null icon when neither exists.
    static QIcon icon(const QString& themeName);

    // The icon drawn as a silhouette in one colour (tinted like text, for painted rows), at
    // `pixelSize` logical pixels for a screen of `devicePixelRatio`.
    static QPixmap pixmap(const QString& iconName, int pixelSize, const QColor& color,
                          qreal devicePixelRatio = 1.0);

    // Typolet's own pictures: the application and the tray.
    static QIcon applicationIcon();
    // Paused, the tray icon is drawn faded, as a disabled icon is.
    static QIcon trayIcon(bool paused = false);

    // `icon` rendered at `size` as a silhouette in `color`.
    static QPixmap tinted(const QIcon& icon, QSize size, const QColor& color,
                          qreal devicePixelRatio);

};
