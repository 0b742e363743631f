#include "EditCategoryDialog.h"

#include "DataError.h"
#include "FormBand.h"
#include "FormParts.h"
#include "PrimaryButtonStyle.h"
#include "SnippetStore.h"
#include "UiTheme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <limits>

EditCategoryDialog::EditCategoryDialog(SnippetStore& store, Category category,
                                   QWidget* parent)
    : QDialog(parent), m_store(store), m_category(std::move(category)) {
    setObjectName(QStringLiteral("editCategoryView"));
    setWindowTitle(tr("Edit Category"));
    setWindowModality(Qt::WindowModal);
    setFixedSize(sheetWidth, sheetHeight);

    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(0, 0, 0, 0);
    root->setSpacing(0);

    auto* header = new FormBand(this);
    auto* headerRow = new QHBoxLayout(header);
    headerRow->setContentsMargins(16, 12, 16, 12);
    headerRow->addWidget(
        FormParts::text(tr("Edit Category"), UiTheme::headline(), header));
    headerRow->addStretch();
    root->addWidget(header);

    auto* body = new QVBoxLayout();
    body->setContentsMargins(24, 20, 24, 20);
    body->setSpacing(6);
    body->addWidget(FormParts::secondaryText(tr("Name"), UiTheme::subheadline(), this));
    m_nameField = new QLineEdit(m_category.name, this);
    m_nameField->setObjectName(QStringLiteral("nameField"));
    m_nameField->setPlaceholderText(tr("Category name"));
    m_nameField->setMaxLength(std::numeric_limits<int>::max()); // never cut a stored name
    m_nameField->setFont(UiTheme::body());
    m_nameField->setCursorPosition(0);
    body->addWidget(m_nameField);
    m_duplicateError =
        FormParts::coloredText(tr("A category with this name already exists"),
                               UiTheme::caption(), UiTheme::red(), this);
    m_duplicateError->setObjectName(QStringLiteral("duplicateError"));
    m_duplicateError->setVisible(false);
    body->addWidget(m_duplicateError);
    body->addStretch(1);
    root->addLayout(body, 1);

    auto* footer = new FormBand(this);
    auto* buttons = new QHBoxLayout(footer);
    buttons->setContentsMargins(16, 12, 16, 12);
    buttons->setSpacing(12);
    buttons->addStretch();
    m_cancelButton = new QPushButton(tr("Cancel"), footer);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    m_cancelButton->setAutoDefault(false);
    buttons->addWidget(m_cancelButton);
    m_saveButton = new QPushButton(tr("Save"), footer);
    m_saveButton->setObjectName(QStringLiteral("saveButton"));
    m_saveButton->setFont(UiTheme::body());
    PrimaryButtonStyle::apply(m_saveButton);
    buttons->addWidget(m_saveButton);
    root->addWidget(footer);

    connect(m_cancelButton, &QAbstractButton::clicked, this, &QDialog::reject);
    // One field: Return submits it, as Ctrl+Return does.
    connect(m_nameField, &QLineEdit::returnPressed, this, [this] {
        if (m_saveButton->isEnabled())
            m_saveButton->click();
    });
    connect(m_saveButton, &QAbstractButton::clicked, this, &EditCategoryDialog::save);
    const auto updateSave = [this] {
        m_saveButton->setEnabled(!name().isEmpty() && name() != m_category.name);
    };
    connect(m_nameField, &QLineEdit::textChanged, this, [this, updateSave] {
        setShowingDuplicateError(false);
        updateSave();
    });
    updateSave();
}

QString EditCategoryDialog::name() const {
    return m_nameField->text();
}

void EditCategoryDialog::setShowingDuplicateError(bool showing) {
    m_showingDuplicateError = showing;
    m_duplicateError->setVisible(showing);
}

void EditCategoryDialog::save() {
    const QString newName = name();
    if (newName.isEmpty() || newName == m_category.name)
        return;
    // The renamed category reaches every view through the store's signal.
    if (FormParts::refused(m_store.updateCategory(m_category, newName), this)) {
        setShowingDuplicateError(true);
        return;
    }
    accept();
}
