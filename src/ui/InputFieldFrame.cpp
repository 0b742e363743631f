#include "InputFieldFrame.h"

#include "UiTheme.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>

InputFieldFrame::InputFieldFrame(int cornerRadius, int padding, QWidget* parent)
    : QWidget(parent), m_row(new QHBoxLayout(this)), m_cornerRadius(cornerRadius) {
    m_row->setContentsMargins(padding, padding, padding, padding);
    m_row->setSpacing(8);
}

void InputFieldFrame::setHighlighted(bool highlighted) {
    if (m_highlighted == highlighted)
        return;
    m_highlighted = highlighted;
    update();
}

QColor InputFieldFrame::outlineColor() const {
    return m_highlighted ? UiTheme::accent(this) : UiTheme::faintOutline();
}

void InputFieldFrame::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath shape;
    shape.addRoundedRect(box, m_cornerRadius, m_cornerRadius);
    painter.fillPath(shape, palette().color(QPalette::Base));
    if (m_highlighted) {
        // The glow sits just inside the outline, so the frame never needs room around it.
        QColor glow = UiTheme::accent(this);
        glow.setAlphaF(0.18f);
        painter.setPen(QPen(glow, 4));
        painter.setClipPath(shape);
        painter.drawPath(shape);
        painter.setClipping(false);
    }
    painter.setPen(QPen(outlineColor(), 1));
    painter.drawPath(shape);
}
