#include "UiTheme.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <QWidget>
#include <cmath>

namespace {
QFont sized(int pixelSize, QFont::Weight weight = QFont::Normal) {
    QFont font = QApplication::font();
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

QColor mixed(const QColor& a, const QColor& b, qreal amountOfB) {
    return QColor::fromRgbF(float(a.redF() * (1 - amountOfB) + b.redF() * amountOfB),
                            float(a.greenF() * (1 - amountOfB) + b.greenF() * amountOfB),
                            float(a.blueF() * (1 - amountOfB) + b.blueF() * amountOfB));
}
} // namespace

QFont UiTheme::headline() {
    return sized(13, QFont::Bold);
}
QFont UiTheme::subheadline() {
    return sized(12);
}
QFont UiTheme::caption() {
    return sized(11);
}
QFont UiTheme::title2() {
    return sized(17, QFont::Bold);
}
QFont UiTheme::body() {
    return sized(13);
}
QFont UiTheme::system(int pixelSize, QFont::Weight weight) {
    return sized(pixelSize, weight);
}

QColor UiTheme::accent(const QWidget* widget) {
    const QPalette palette = widget ? widget->palette() : QApplication::palette();
    return palette.color(QPalette::Active, QPalette::Highlight);
}

QColor UiTheme::accent(const QPalette& palette) {
    return palette.color(QPalette::Active, QPalette::Highlight);
}

QColor UiTheme::windowBackground(const QPalette& palette) {
    return palette.color(QPalette::Window);
}

QColor UiTheme::secondaryLabel(const QPalette& palette) {
    const QColor window = palette.color(QPalette::Window);
    return readable(mixed(window, palette.color(QPalette::WindowText), 0.6), window);
}

QColor UiTheme::tertiaryLabel(const QPalette& palette) {
    const QColor window = palette.color(QPalette::Window);
    return readable(mixed(window, palette.color(QPalette::WindowText), 0.45), window);
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

QColor UiTheme::gray() {
    return QColor(142, 142, 147);
}

QColor UiTheme::withOpacity(QColor color, qreal opacity) {
    color.setAlphaF(float(color.alphaF() * opacity));
    return color;
}

QColor UiTheme::secondaryText(const QWidget* widget) {
    return secondaryLabel(widget ? widget->palette() : QApplication::palette());
}

QColor UiTheme::red() {
    return QColor(0xE5, 0x39, 0x35);
}
QColor UiTheme::green() {
    return QColor(0x2E, 0xB8, 0x4F);
}
QColor UiTheme::orange() {
    return QColor(0xC7, 0x6A, 0x00);
}
QColor UiTheme::faintOutline() {
    return QColor(128, 128, 128, 51);
}

QColor UiTheme::bandBackground(const QWidget* widget) {
    const QPalette palette = widget ? widget->palette() : QApplication::palette();
    const QColor window = palette.color(QPalette::Window);
    return window.lightness() > 128 ? window.darker(104) : window.lighter(118);
}

void UiTheme::drawRowFocus(QPainter* painter, const QStyleOptionViewItem& option) {
    if (!(option.state & QStyle::State_HasFocus))
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    // On the selected row's accent fill the outline takes the selected text's colour.
    const QColor colour = option.palette.color(
        QPalette::Active, option.state & QStyle::State_Selected ? QPalette::HighlightedText
                                                                : QPalette::Highlight);
    painter->setPen(QPen(colour, 2));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(option.rect).adjusted(7, 2, -7, -2), 5, 5);
    painter->restore();
}

void UiTheme::setForeground(QWidget* widget, const QColor& color) {
    QPalette palette = widget->palette();
    for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        palette.setColor(group, QPalette::WindowText, color);
        palette.setColor(group, QPalette::Text, color);
        palette.setColor(group, QPalette::ButtonText, color);
    }
    widget->setPalette(palette);
}
