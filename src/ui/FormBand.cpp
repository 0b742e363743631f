#include "FormBand.h"

#include "UiTheme.h"

#include <QPainter>

FormBand::FormBand(QWidget* parent) : QWidget(parent) {}

void FormBand::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), UiTheme::bandBackground(this));
}
