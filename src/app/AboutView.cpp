#include "AboutView.h"

#include "SymbolImage.h"
#include "UiTheme.h"

#include <QApplication>
#include <QDesktopServices>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

#ifndef TYPOLET_VERSION
#define TYPOLET_VERSION ""
#endif

namespace {
QPixmap roundedIcon(qreal devicePixelRatio) {
    const int size = AboutView::iconSize;
    QPixmap pixmap(QSize(size, size) * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath clip;
    clip.addRoundedRect(QRectF(0, 0, size, size), 12, 12);
    painter.setClipPath(clip);
    SymbolImage::applicationIcon().paint(&painter, QRect(0, 0, size, size));
    return pixmap;
}
} // namespace

AboutView::AboutView(QWidget* parent) : AboutView(compiledVersion(), parent) {}

AboutView::AboutView(const QString& version, QWidget* parent) : QWidget(parent) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Window);
    setFixedSize(viewWidth, viewHeight);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(16);
    layout->addStretch(1);

    m_icon = new QLabel(this);
    m_icon->setFixedSize(iconSize, iconSize);
    // Drawn for the sharpest screen, as the window may open on any of them.
    m_icon->setPixmap(roundedIcon(qApp->devicePixelRatio()));
    m_icon->setAccessibleName(QStringLiteral("Typolet"));
    layout->addWidget(m_icon, 0, Qt::AlignHCenter);

    m_name = new QLabel(QStringLiteral("Typolet"), this);
    QFont nameFont = UiTheme::titleFont();
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.5);
    m_name->setFont(nameFont);
    layout->addWidget(m_name, 0, Qt::AlignHCenter);

    m_version = new QLabel(tr("Version %1").arg(displayedVersion(version)), this);
    m_version->setFont(UiTheme::smallFont());
    m_version->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_version, 0, Qt::AlignHCenter);

    m_website = new QLabel(this);
    m_website->setFont(UiTheme::smallFont());
    m_website->setTextFormat(Qt::RichText);
    m_website->setText(QStringLiteral("<a href=\"%1\">%2</a>")
                           .arg(websiteUrl().toString(), websiteName().toHtmlEscaped()));
    m_website->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    m_website->setContentsMargins(0, 4, 0, 0);
    m_website->setToolTip(websiteUrl().toString());
    // Hand the address to the desktop's browser.
    connect(m_website, &QLabel::linkActivated, this,
            [](const QString& link) { QDesktopServices::openUrl(QUrl(link)); });
    layout->addWidget(m_website, 0, Qt::AlignHCenter);

    layout->addStretch(1);
}

QString AboutView::compiledVersion() {
    return QStringLiteral(TYPOLET_VERSION);
}

QString AboutView::displayedVersion(const QString& version) {
    const QString trimmed = version.trimmed();
    return trimmed.isEmpty() ? QStringLiteral("1.0") : trimmed;
}

QUrl AboutView::websiteUrl() {
    return QUrl(QStringLiteral("https://typolet.app"));
}

QString AboutView::websiteName() {
    return QStringLiteral("typolet.app");
}
