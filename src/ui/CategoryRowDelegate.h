#pragma once

#include <QStyledItemDelegate>

// Paints only the background of a sidebar row (the rounded accent selection); the row's
// contents are its CategoryRowView widget on top. Every row has the same height.
class CategoryRowDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static int rowHeight();

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
