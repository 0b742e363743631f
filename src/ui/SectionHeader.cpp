#include "SectionHeader.h"

#include "CapsuleBadge.h"
#include "SymbolImage.h"
#include "UiTheme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

namespace {
// The symbol is drawn at the size an 18-pixel glyph would have inside the 24-pixel circle.
constexpr int glyphSize = 14;
} // namespace

SectionHeader::SectionHeader(const QString& symbolName, const QString& title, const QString& badge,
                             QWidget* parent)
    : QWidget(parent), m_symbolName(symbolName), m_icon(SymbolImage::icon(symbolName)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    // The icon is painted in this reserved square. A layout adds no spacing next to a spacer,
    // so the gap after the icon is part of it.
    layout->addSpacing(iconSize + spacing);

    m_title = new QLabel(title, this);
    m_title->setFont(UiTheme::system(16, QFont::DemiBold));
    layout->addWidget(m_title, 0, Qt::AlignVCenter);

    if (!badge.isEmpty()) {
        m_badge = new CapsuleBadge(badge, this);
        layout->addWidget(m_badge, 0, Qt::AlignVCenter);
    }
    layout->addStretch(1);
    setMinimumHeight(iconSize);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void SectionHeader::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor accent = UiTheme::accent(palette());
    const QRectF circle(0, (height() - iconSize) / 2.0, iconSize, iconSize);
    painter.setPen(Qt::NoPen);
    painter.setBrush(UiTheme::withOpacity(accent, 0.1));
    painter.drawEllipse(circle);

    const QPixmap glyph =
        SymbolImage::tinted(m_icon, QSize(glyphSize, glyphSize), accent, devicePixelRatioF());
    const QPointF topLeft = circle.center() - QPointF(glyphSize / 2.0, glyphSize / 2.0);
    painter.drawPixmap(topLeft, glyph);
}
