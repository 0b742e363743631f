#include "PreferenceCard.h"

#include "SymbolImage.h"
#include "UiTheme.h"

#include <QGraphicsDropShadowEffect>
#include <QPainter>
#include <QVBoxLayout>

PreferenceCard::PreferenceCard(QWidget* parent) : QWidget(parent) {
    // As tall as its content needs, never shorter than a one-setting card.
    setFixedWidth(cardWidth);
    setMinimumHeight(cardHeight);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Minimum);
    m_layout = new QVBoxLayout(this);
    m_layout->setContentsMargins(20, 16, 20, 16);
    m_layout->setSpacing(16);

    auto* shadow = new QGraphicsDropShadowEffect(this);
    shadow->setColor(QColor(0, 0, 0, 13)); // black at 5 %
    shadow->setBlurRadius(16);
    shadow->setOffset(0, 2);
    setGraphicsEffect(shadow);
}

void PreferenceCard::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // Half a pixel in, so the one-pixel outline falls on whole pixels.
    const QRectF r = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setBrush(UiTheme::withOpacity(UiTheme::windowBackground(palette()), 0.5));
    QPen outline(UiTheme::withOpacity(UiTheme::gray(), 0.1), 1);
    outline.setCapStyle(Qt::FlatCap);
    outline.setJoinStyle(Qt::MiterJoin);
    painter.setPen(outline);
    painter.drawRoundedRect(r, cornerRadius, cornerRadius);
}
