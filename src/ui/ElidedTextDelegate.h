#pragma once

#include <QStyledItemDelegate>

// Draws a cell's text cut to the cell's width first. The style lays a cell's whole text out
// several times while it paints it (to size it, to place it, to elide it, to draw it); for the
// long lines of a content column, cutting it once keeps a list repaint a fraction of the cost.
class ElidedTextDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};
