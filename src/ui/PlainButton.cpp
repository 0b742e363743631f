#include "PlainButton.h"

#include "SymbolImage.h"
#include "UiTheme.h"

#include <QEvent>
#include <QPainter>

PlainButton::PlainButton(const QString& symbolName, const QString& text, QWidget* parent)
    : QAbstractButton(parent), m_symbol(symbolName) {
    setText(text);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
}

void PlainButton::setSymbol(const QString& symbolName) {
    m_symbol = symbolName;
    updateGeometry();
    update();
}

void PlainButton::setSymbolSize(int pixelSize) {
    m_symbolSize = pixelSize;
    updateGeometry();
    update();
}

void PlainButton::setSpacing(int spacing) {
    m_spacing = spacing;
    updateGeometry();
    update();
}

void PlainButton::setPadding(QMargins padding) {
    m_padding = padding;
    updateGeometry();
    update();
}

void PlainButton::setColor(const QColor& color) {
    m_color = color;
    update();
}

void PlainButton::setColorRole(QPalette::ColorRole role) {
    m_colorRole = role;
    m_color = QColor();
    update();
}

QColor PlainButton::color() const {
    // A colour taken from a palette role is made readable on the window it sits on, with room
    // for the shaded bands of the forms.
    return m_color.isValid() ? m_color
                             : UiTheme::readable(palette().color(QPalette::Active, m_colorRole),
                                                 palette().color(QPalette::Window), 5.5);
}

QSize PlainButton::sizeHint() const {
    const QFontMetrics metrics(font());
    const bool hasSymbol = !m_symbol.isEmpty();
    const bool hasText = !text().isEmpty();
    const int width = (hasSymbol ? m_symbolSize : 0) + (hasSymbol && hasText ? m_spacing : 0) +
                      (hasText ? metrics.horizontalAdvance(text()) : 0);
    const int height = qMax(hasSymbol ? m_symbolSize : 0, hasText ? metrics.height() : 0);
    return QSize(width, height).grownBy(m_padding);
}

bool PlainButton::event(QEvent* event) {
    // A symbol-only button is announced by its tooltip ("Edit Category").
    if (event->type() == QEvent::ToolTipChange && text().isEmpty())
        setAccessibleName(toolTip());
    return QAbstractButton::event(event);
}

void PlainButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.35);
    else if (isDown())
        painter.setOpacity(0.6);

    const QRect content = rect().marginsRemoved(m_padding);
    const QSize hint = sizeHint().shrunkBy(m_padding);
    int x = content.x() + (content.width() - hint.width()) / 2;
    const QColor ink = color();
    if (!m_symbol.isEmpty()) {
        const QPixmap symbol =
            SymbolImage::pixmap(m_symbol, m_symbolSize, ink, devicePixelRatioF());
        painter.drawPixmap(x, content.y() + (content.height() - m_symbolSize) / 2, symbol);
        x += m_symbolSize + (text().isEmpty() ? 0 : m_spacing);
    }
    if (!text().isEmpty()) {
        painter.setPen(ink);
        painter.drawText(QRect(x, content.y(), content.right() - x + 1, content.height()),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text());
    }
    if (hasFocus()) {
        QColor ring = UiTheme::accent(this);
        ring.setAlpha(140);
        painter.setOpacity(1.0);
        painter.setPen(QPen(ring, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    }
}
