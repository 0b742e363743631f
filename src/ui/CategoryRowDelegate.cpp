#include "CategoryRowDelegate.h"

#include "UiTheme.h"

#include <QPainter>
#include <QPainterPath>

int CategoryRowDelegate::rowHeight() {
    return QFontMetrics(UiTheme::titleFont()).height() +
           QFontMetrics(UiTheme::smallFont()).height() +
           1 + 2 * 4 + 8;
}

QSize CategoryRowDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return QSize(200, rowHeight());
}

void CategoryRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex&) const {
    if (!(option.state & QStyle::State_Selected)) {
        UiTheme::drawRowFocus(painter, option);
        return;
    }
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    shape.addRoundedRect(QRectF(option.rect).adjusted(6, 1, -6, -1), 6, 6);
    painter->fillPath(shape, UiTheme::selectionFill(option.palette));
    painter->restore();
    UiTheme::drawRowFocus(painter, option);
}
