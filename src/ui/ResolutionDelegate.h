#pragma once

#include <QStyledItemDelegate>

// Edits an import candidate's resolution (ImportCandidateModel's clash column) with a combo
// box that exists only while the row is edited, so a table of any length holds no widget per
// row. A choice is written to the model as soon as it is made.
class ResolutionDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;

private:
    void commitAndClose();
};
