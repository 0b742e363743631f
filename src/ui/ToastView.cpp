#include "ToastView.h"

#include "FormParts.h"
#include "SymbolView.h"
#include "UiTheme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>

ToastView::ToastView(const QString& message, QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("toast"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(shadowMargin + 16, shadowMargin + 12, shadowMargin + 16,
                            shadowMargin + 12);
    row->setSpacing(8);
    row->addWidget(
        FormParts::symbol(QStringLiteral("checkmark.circle.fill"), 16, UiTheme::green(), this));
    m_message = FormParts::text(message, UiTheme::body(), this);
    row->addWidget(m_message);
    adjustSize();
}

QString ToastView::message() const {
    return m_message->text();
}

void ToastView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF badge =
        QRectF(rect()).adjusted(shadowMargin, shadowMargin, -shadowMargin, -shadowMargin);
    // Shadow: black at 10 % spread over radius 5, 2 px below the badge.
    for (int i = 5; i >= 1; --i) {
        QPainterPath ring;
        ring.addRoundedRect(badge.translated(0, 2).adjusted(-i, -i, i, i), 8 + i, 8 + i);
        painter.fillPath(ring, QColor(0, 0, 0, 5));
    }
    QPainterPath shape;
    shape.addRoundedRect(badge, 8, 8);
    painter.fillPath(shape, palette().color(QPalette::Window));
    // On a dark window the shadow all but vanishes; a faint edge keeps the badge apart.
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlphaF(0.12f);
    painter.setPen(QPen(edge, 1));
    painter.drawRoundedRect(badge.adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
}
