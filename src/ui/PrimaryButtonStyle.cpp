#include "PrimaryButtonStyle.h"

#include "UiTheme.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyleOptionButton>

namespace {
const char* labelPaddingProperty = "typoletLabelPadding";
const char* iconSpacingProperty = "typoletIconSpacing";
const char* minimumWidthProperty = "typoletLabelMinimumWidth";

QMargins labelPaddingOf(const QWidget* widget) {
    return widget ? widget->property(labelPaddingProperty).value<QMargins>() : QMargins();
}
int iconSpacingOf(const QWidget* widget) {
    return widget ? widget->property(iconSpacingProperty).toInt() : 6;
}
} // namespace

// Built on the application's own style, which draws whatever this one leaves alone.
PrimaryButtonStyle::PrimaryButtonStyle()
    : QProxyStyle(QStyleFactory::create(QApplication::style()->name())) {
    setParent(qApp); // lives as long as the application
}

PrimaryButtonStyle* PrimaryButtonStyle::instance() {
    static PrimaryButtonStyle* style = new PrimaryButtonStyle();
    return style;
}

void PrimaryButtonStyle::apply(QPushButton* button, QMargins labelPadding, int iconSpacing,
                               int labelMinimumWidth) {
    button->setProperty(labelPaddingProperty, QVariant::fromValue(labelPadding));
    button->setProperty(iconSpacingProperty, iconSpacing);
    button->setProperty(minimumWidthProperty, labelMinimumWidth);
    button->setAutoDefault(false);
    button->setDefault(false);
    button->setFlat(true);
    button->setCursor(Qt::PointingHandCursor);
    button->setStyle(instance());
}

int PrimaryButtonStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                                    const QWidget* widget) const {
    if (metric == PM_ButtonShiftHorizontal || metric == PM_ButtonShiftVertical)
        return 0; // the pressed state only dims; the label does not move
    return QProxyStyle::pixelMetric(metric, option, widget);
}

QSize PrimaryButtonStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                           const QSize& size, const QWidget* widget) const {
    if (type != CT_PushButton)
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    const auto* buttonOption = qstyleoption_cast<const QStyleOptionButton*>(option);
    // QPushButton passes text width plus a fixed 4 px gap when there is an icon; lay the
    // label out ourselves so the gap is the one asked for.
    QSize label = size;
    if (buttonOption && !buttonOption->icon.isNull() && !buttonOption->text.isEmpty()) {
        const int textWidth = buttonOption->fontMetrics.horizontalAdvance(buttonOption->text);
        label.setWidth(buttonOption->iconSize.width() + iconSpacingOf(widget) + textWidth);
    }
    const QMargins padding = labelPaddingOf(widget);
    label.setWidth(
        qMax(label.width(), widget ? widget->property(minimumWidthProperty).toInt() : 0));
    return label.grownBy(padding) + QSize(2 * horizontalPadding, 2 * verticalPadding);
}

void PrimaryButtonStyle::drawControl(ControlElement element, const QStyleOption* option,
                                     QPainter* painter, const QWidget* widget) const {
    if (element != CE_PushButton)
        return QProxyStyle::drawControl(element, option, painter, widget);
    const auto* buttonOption = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (!buttonOption)
        return;

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const bool pressed = buttonOption->state & State_Sunken;
    // Disabled (Save with nothing to save) reads as such: faded.
    const bool enabled = buttonOption->state & State_Enabled;
    painter->setOpacity(!enabled ? 0.4 : pressed ? pressedOpacity : 1.0);

    QPainterPath shape;
    shape.addRoundedRect(QRectF(buttonOption->rect), cornerRadius, cornerRadius);
    const QPalette& palette = buttonOption->palette;
    const QColor onFill = palette.color(QPalette::Active, QPalette::HighlightedText);
    painter->fillPath(shape, UiTheme::selectionFill(palette));
    if (buttonOption->state & State_HasFocus && buttonOption->state & State_KeyboardFocusChange) {
        // Keyboard focus: a thin white ring inside the fill.
        painter->setPen(QPen(onFill, 1.5));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRectF(buttonOption->rect).adjusted(2, 2, -2, -2),
                                 cornerRadius - 2, cornerRadius - 2);
    }

    // The label: symbol and text centred together, white.
    const QFontMetrics& metrics = buttonOption->fontMetrics;
    const bool hasIcon = !buttonOption->icon.isNull();
    const QSize iconSize = hasIcon ? buttonOption->iconSize : QSize();
    const int spacing = hasIcon && !buttonOption->text.isEmpty() ? iconSpacingOf(widget) : 0;
    const int textWidth = metrics.horizontalAdvance(buttonOption->text);
    const int contentWidth = iconSize.width() + spacing + textWidth;
    const QRect bounds = buttonOption->rect;
    int x = bounds.x() + (bounds.width() - contentWidth) / 2;
    if (hasIcon) {
        const QPixmap pixmap =
            buttonOption->icon.pixmap(iconSize, painter->device()->devicePixelRatioF());
        const QRect iconRect(x, bounds.y() + (bounds.height() - iconSize.height()) / 2,
                             iconSize.width(), iconSize.height());
        painter->drawPixmap(iconRect, pixmap);
        x += iconSize.width() + spacing;
    }
    painter->setPen(onFill);
    painter->setFont(widget ? widget->font() : painter->font());
    painter->drawText(QRect(x, bounds.y(), textWidth + 1, bounds.height()),
                      Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, buttonOption->text);
    painter->restore();
}
