#include "ShellStyle.h"

#include <QApplication>
#include <QPainter>

// Outside any namespace: Q_INIT_RESOURCE declares the initialiser as a global function.
static void loadResources() {
    // The icons are compiled into this static library; its resource initialiser must be
    // referenced once or the linker drops it.
    static const bool loaded = [] {
        Q_INIT_RESOURCE(app);
        return true;
    }();
    Q_UNUSED(loaded);
}

namespace {
QColor mixed(const QColor& a, const QColor& b, qreal amountOfB) {
    return QColor::fromRgbF(float(a.redF() * (1 - amountOfB) + b.redF() * amountOfB),
                            float(a.greenF() * (1 - amountOfB) + b.greenF() * amountOfB),
                            float(a.blueF() * (1 - amountOfB) + b.blueF() * amountOfB));
}
} // namespace

QColor ShellStyle::accent(const QPalette& palette) {
    return palette.color(QPalette::Active, QPalette::Highlight);
}

QColor ShellStyle::windowBackground(const QPalette& palette) {
    return palette.color(QPalette::Window);
}

QColor ShellStyle::secondaryLabel(const QPalette& palette) {
    // Opaque mixes rather than translucent text: the same look on every background, and text
    // anti-aliasing stays crisp.
    return mixed(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.6);
}

QColor ShellStyle::tertiaryLabel(const QPalette& palette) {
    return mixed(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.45);
}

QColor ShellStyle::gray() {
    return QColor(142, 142, 147);
}

QFont ShellStyle::font(int pixelSize, QFont::Weight weight) {
    QFont f = QApplication::font();
    f.setPixelSize(pixelSize);
    f.setWeight(weight);
    return f;
}

QIcon ShellStyle::applicationIcon() {
    loadResources();
    return QIcon(QStringLiteral(":/icons/typolet.svg"));
}

QIcon ShellStyle::trayIcon() {
    loadResources();
    return QIcon(QStringLiteral(":/icons/text-bubble.svg"));
}

QIcon ShellStyle::symbol(const QString& symbolName) {
    loadResources();
    if (symbolName == QLatin1String("gearshape.fill"))
        return QIcon::fromTheme(QStringLiteral("preferences-system"),
                                QIcon(QStringLiteral(":/icons/gearshape.svg")));
    if (symbolName == QLatin1String("arrow.triangle.2.circlepath"))
        return QIcon::fromTheme(QStringLiteral("view-refresh"),
                                QIcon(QStringLiteral(":/icons/sync-arrows.svg")));
    if (symbolName == QLatin1String("text.bubble"))
        return trayIcon();
    return {};
}

QPixmap ShellStyle::tinted(const QIcon& icon, QSize size, const QColor& color,
                           qreal devicePixelRatio) {
    QPixmap pixmap(size * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    icon.paint(&painter, QRect(QPoint(0, 0), size));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRect(QPoint(0, 0), size), color);
    return pixmap;
}

QColor ShellStyle::withOpacity(QColor color, qreal opacity) {
    color.setAlphaF(float(color.alphaF() * opacity));
    return color;
}
