#include "UiTheme.h"

#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <cmath>

namespace {
QColor mixed(const QColor& a, const QColor& b, qreal amountOfB) {
    return QColor::fromRgbF(float(a.redF() * (1 - amountOfB) + b.redF() * amountOfB),
                            float(a.greenF() * (1 - amountOfB) + b.greenF() * amountOfB),
                            float(a.blueF() * (1 - amountOfB) + b.blueF() * amountOfB));
}
} // namespace

QFont UiTheme::titleFont() {
    QFont font = QApplication::font();
    font.setBold(true);
    return font;
}

QFont UiTheme::smallFont() {
    QFont font = QApplication::font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * 0.9);
    else
        font.setPixelSize(std::max(9, int(font.pixelSize() * 0.9)));
    return font;
}

QLabel* UiTheme::smallLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setFont(smallFont());
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QColor UiTheme::secondaryText(const QPalette& palette) {
    const QColor base = palette.color(QPalette::Base);
    return readable(mixed(base, palette.color(QPalette::Text), 0.6), base);
}

double UiTheme::contrast(const QColor& a, const QColor& b) {
    const auto luminance = [](const QColor& c) {
        const auto channel = [](float value) {
            return value <= 0.03928f ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) +
               0.0722 * channel(c.blueF());
    };
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QColor UiTheme::readable(const QColor& color, const QColor& background, double needed) {
    const QColor away = background.lightnessF() > 0.5 ? QColor(Qt::black) : QColor(Qt::white);
    for (int step = 0; step <= 20; ++step) {
        const QColor candidate = mixed(color, away, step / 20.0);
        if (contrast(candidate, background) >= needed)
            return candidate;
    }
    return away;
}

QColor UiTheme::selectionFill(const QPalette& palette) {
    const QColor text = palette.color(QPalette::Active, QPalette::HighlightedText);
    return readable(palette.color(QPalette::Active, QPalette::Highlight), text);
}

void UiTheme::drawRowFocus(QPainter* painter, const QStyleOptionViewItem& option) {
    if (!(option.state & QStyle::State_HasFocus))
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    // On the selected row's fill the outline takes the selected text's colour.
    const QColor colour = option.palette.color(
        QPalette::Active,
        option.state & QStyle::State_Selected ? QPalette::HighlightedText : QPalette::Highlight);
    painter->setPen(QPen(colour, 2));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(option.rect).adjusted(7, 2, -7, -2), 5, 5);
    painter->restore();
}

QString UiTheme::oneLine(const QString& text, qsizetype limit) {
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
