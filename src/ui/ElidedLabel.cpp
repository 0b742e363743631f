#include "ElidedLabel.h"

#include <QPainter>

namespace {
// More characters than any column can show; measuring beyond this only costs time.
constexpr qsizetype shownLimit = 400;
} // namespace

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setText(text);
}

QString ElidedLabel::oneLine(const QString& text, qsizetype limit) {
    QString shown = text.left(limit);
    for (QChar& c : shown) {
        if (c == u'\n' || c == u'\r' || c == u'\t' || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator)
            c = u' ';
    }
    if (text.size() > limit)
        shown += QChar(0x2026);
    return shown;
}

void ElidedLabel::setText(const QString& text) {
    m_text = text;
    m_shown = oneLine(text, shownLimit);
    updateGeometry();
    update();
}

void ElidedLabel::setColor(const QColor& color) {
    m_color = color;
    update();
}

QSize ElidedLabel::sizeHint() const {
    const QFontMetrics metrics(font());
    return QSize(qMin(metrics.horizontalAdvance(m_shown), 400), metrics.height());
}

QSize ElidedLabel::minimumSizeHint() const {
    return QSize(0, QFontMetrics(font()).height());
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(m_color.isValid() ? m_color : palette().color(QPalette::WindowText));
    const QString elided = fontMetrics().elidedText(m_shown, Qt::ElideRight, width());
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, elided);
}
