#include "ElidedTextDelegate.h"

#include <QApplication>
#include <QStyle>

void ElidedTextDelegate::initStyleOption(QStyleOptionViewItem* option,
                                         const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    if (option->text.isEmpty() || option->rect.width() <= 0 ||
        option->textElideMode == Qt::ElideNone)
        return;
    // The room the style leaves for text in a cell without an icon or check box.
    const QStyle* style = option->widget ? option->widget->style() : QApplication::style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, option->widget) + 1;
    const int width = option->rect.width() - 2 * margin;
    if (width > 0)
        option->text = option->fontMetrics.elidedText(option->text, option->textElideMode, width);
}
