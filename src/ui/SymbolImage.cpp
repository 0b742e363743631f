#include "SymbolImage.h"

#include <QCoreApplication>
#include <QHash>
#include <QPainter>

namespace {
struct SymbolEntry {
    const char* symbol;
    const char* theme;
    const char* resource;
};

constexpr SymbolEntry symbols[] = {
    {"folder", "folder", ":/ui/folder.svg"},
    {"folder.badge.plus.fill", "folder-new", ":/ui/folder-badge-plus-fill.svg"},
    {"plus.circle.fill", "list-add", ":/ui/plus-circle-fill.svg"},
    {"trash", "edit-delete", ":/ui/trash.svg"},
    {"trash.circle.fill", "edit-delete", ":/ui/trash-circle-fill.svg"},
    {"pencil.circle.fill", "document-edit", ":/ui/pencil-circle-fill.svg"},
    {"xmark.circle.fill", "dialog-cancel", ":/ui/xmark-circle-fill.svg"},
    {"checkmark.circle.fill", "dialog-ok", ":/ui/checkmark-circle-fill.svg"},
    {"square.and.arrow.down.fill", "document-save", ":/ui/square-and-arrow-down-fill.svg"},
    {"command", "input-keyboard", ":/ui/command.svg"},
    {"exclamationmark.circle", "dialog-error", ":/ui/exclamationmark-circle.svg"},
    {"gearshape.fill", "preferences-system", ":/icons/gearshape.svg"},
    {"arrow.triangle.2.circlepath", "view-refresh", ":/icons/sync-arrows.svg"},
};

const SymbolEntry* find(const QString& symbolName) {
    for (const SymbolEntry& entry : symbols) {
        if (symbolName == QLatin1String(entry.symbol))
            return &entry;
    }
    return nullptr;
}
} // namespace

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

QString SymbolImage::themeName(const QString& symbolName) {
    const SymbolEntry* entry = find(symbolName);
    return entry ? QString::fromLatin1(entry->theme) : QString();
}

QIcon SymbolImage::icon(const QString& symbolName) {
    const SymbolEntry* entry = find(symbolName);
    if (!entry)
        return {};
    ensureResources();
    return QIcon::fromTheme(QString::fromLatin1(entry->theme),
                            QIcon(QString::fromLatin1(entry->resource)));
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

QPixmap SymbolImage::pixmap(const QString& symbolName, int pixelSize, const QColor& color,
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
                            .arg(symbolName)
                            .arg(pixelSize)
                            .arg(color.rgba())
                            .arg(devicePixelRatio);
    if (const auto it = cache.constFind(key); it != cache.constEnd())
        return *it;

    const QPixmap drawn =
        tinted(icon(symbolName), QSize(pixelSize, pixelSize), color, devicePixelRatio);
    if (cache.size() > 512)
        cache.clear();
    cache.insert(key, drawn);
    return drawn;
}
