#include "CapsuleBadge.h"

#include "SymbolImage.h"
#include "UiTheme.h"

#include <QPainter>

CapsuleBadge::CapsuleBadge(const QString& text, QWidget* parent)
    : ToneLabel(text, Tone::Secondary, parent) {
    setFont(UiTheme::system(9, QFont::Medium));
    setContentsMargins(6, 2, 6, 2);
    setAlignment(Qt::AlignCenter);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void CapsuleBadge::paintEvent(QPaintEvent* event) {
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(UiTheme::withOpacity(UiTheme::gray(), 0.15));
        const QRectF r = QRectF(rect());
        painter.drawRoundedRect(r, r.height() / 2, r.height() / 2);
    }
    QLabel::paintEvent(event);
}
