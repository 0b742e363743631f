#include "SymbolImage.h"

#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPalette>
#include <QHash>
#include <QPainter>

// Outside any namespace: the resource initialiser is a global function.
static void ensureResources() {
    // The icons live in a static library; make sure its resources are registered.
    static const bool registered = [] {
        Q_INIT_RESOURCE(ui_icons);
        Q_INIT_RESOURCE(app);
        return true;
    }();
    Q_UNUSED(registered);
}

namespace {
// The bundled pictures are black shapes; drawn as they are they would vanish on a dark
// window. They are drawn in the palette's text colour of the moment instead, so they follow
// the desktop between light and dark as the icon theme's own icons do.
class PaletteTintedIconEngine : public QIconEngine {
public:
    explicit PaletteTintedIconEngine(const QString& file) : m_file(file), m_shape(file) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
        painter->drawPixmap(rect, SymbolImage::tinted(m_shape, rect.size(), colour(mode), ratio));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return SymbolImage::tinted(m_shape, size, colour(mode), 1.0);
    }
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State,
                         qreal scale) override {
        return SymbolImage::tinted(m_shape, size, colour(mode), scale);
    }
    QIconEngine* clone() const override { return new PaletteTintedIconEngine(m_file); }

private:
    static QColor colour(QIcon::Mode mode) {
        const QPalette palette = QGuiApplication::palette();
        switch (mode) {
        case QIcon::Disabled:
            return palette.color(QPalette::Disabled, QPalette::WindowText);
        case QIcon::Selected:
            return palette.color(QPalette::Active, QPalette::HighlightedText);
        default:
            return palette.color(QPalette::Active, QPalette::WindowText);
        }
    }

    QString m_file;
    QIcon m_shape;
};
} // namespace

QIcon SymbolImage::icon(const QString& themeName) {
    ensureResources();
    if (QIcon::hasThemeIcon(themeName))
        return QIcon::fromTheme(themeName);
    const QString fallback = QStringLiteral(":/ui/%1.svg").arg(themeName);
    return QFile::exists(fallback) ? QIcon(new PaletteTintedIconEngine(fallback)) : QIcon();
}

QIcon SymbolImage::applicationIcon() {
    ensureResources();
    return QIcon(QStringLiteral(":/icons/typolet.svg"));
}

QIcon SymbolImage::trayIcon(bool paused) {
    ensureResources();
    const QIcon icon(QStringLiteral(":/icons/text-bubble.svg"));
    if (!paused)
        return icon;
    // Paused: the same bubble with a pause badge (two bars on a disc) in its lower corner,
    // which reads at panel size where a paler icon would not.
    QIcon badged;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap = icon.pixmap(QSize(size, size));
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        const qreal disc = size * 0.6;
        const QRectF badge(size - disc, size - disc, disc, disc);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0x20, 0x20, 0x20));
        painter.drawEllipse(badge);
        painter.setBrush(Qt::white);
        const qreal bar = disc * 0.16, height = disc * 0.5;
        const qreal top = badge.center().y() - height / 2;
        painter.drawRect(QRectF(badge.center().x() - bar * 1.5, top, bar, height));
        painter.drawRect(QRectF(badge.center().x() + bar * 0.5, top, bar, height));
        painter.end();
        badged.addPixmap(pixmap);
    }
    return badged;
}

QPixmap SymbolImage::tinted(const QIcon& icon, QSize size, const QColor& color,
                            qreal devicePixelRatio) {
    QPixmap pixmap(size * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    icon.paint(&painter, QRect(QPoint(0, 0), size));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRect(QPoint(0, 0), size), color);
    return pixmap;
}

QPixmap SymbolImage::pixmap(const QString& iconName, int pixelSize, const QColor& color,
                            qreal devicePixelRatio) {
    // Rows repaint their symbols constantly while scrolling; tinted pixmaps are cached.
    static QHash<QString, QPixmap> cache;
    // Pixmaps must not outlive the application object; let go of them when it goes.
    static const bool releaseWithApplication = [] {
        QObject::connect(QCoreApplication::instance(), &QObject::destroyed, [] { cache.clear(); });
        return true;
    }();
    Q_UNUSED(releaseWithApplication);
    const QString key = QStringLiteral("%1|%2|%3|%4")
                            .arg(iconName)
                            .arg(pixelSize)
                            .arg(color.rgba())
                            .arg(devicePixelRatio);
    if (const auto it = cache.constFind(key); it != cache.constEnd())
        return *it;

    const QPixmap drawn =
        tinted(icon(iconName), QSize(pixelSize, pixelSize), color, devicePixelRatio);
    if (cache.size() > 512)
        cache.clear();
    cache.insert(key, drawn);
    return drawn;
}
