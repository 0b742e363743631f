#include "ResolutionDelegate.h"

#include "ImportCandidateModel.h"

#include <QComboBox>

QWidget* ResolutionDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                          const QModelIndex&) const {
    auto* choice = new QComboBox(parent);
    for (const auto resolution : {ImportPlan::Resolution::skip, ImportPlan::Resolution::keepBoth,
                                  ImportPlan::Resolution::replace})
        choice->addItem(ImportCandidateModel::resolutionName(resolution), int(resolution));
    connect(choice, &QComboBox::activated, this, &ResolutionDelegate::commitAndClose);
    return choice;
}

void ResolutionDelegate::commitAndClose() {
    auto* choice = qobject_cast<QWidget*>(sender());
    emit commitData(choice);
    emit closeEditor(choice);
}

void ResolutionDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    auto* choice = static_cast<QComboBox*>(editor);
    choice->setCurrentIndex(choice->findData(index.data(Qt::EditRole)));
}

void ResolutionDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                      const QModelIndex& index) const {
    model->setData(index, static_cast<QComboBox*>(editor)->currentData(), Qt::EditRole);
}
