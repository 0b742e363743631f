#include "SymbolView.h"

#include "SymbolImage.h"
#include "UiTheme.h"

#include <QPainter>

SymbolView::SymbolView(const QString& symbolName, int pixelSize, QWidget* parent)
    : QWidget(parent), m_symbol(symbolName), m_size(pixelSize) {
    setFixedSize(pixelSize, pixelSize);
}

void SymbolView::setColor(const QColor& color) {
    m_color = color;
    update();
}

QColor SymbolView::color() const {
    return m_color.isValid() ? m_color : UiTheme::accent(this);
}

void SymbolView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawPixmap((width() - m_size) / 2, (height() - m_size) / 2,
                       SymbolImage::pixmap(m_symbol, m_size, color(), devicePixelRatioF()));
}
