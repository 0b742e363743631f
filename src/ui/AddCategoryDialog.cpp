#include "AddCategoryDialog.h"

#include "DataError.h"
#include "Divider.h"
#include "FocusableTextField.h"
#include "FormBand.h"
#include "FormParts.h"
#include "InputFieldFrame.h"
#include "PlainButton.h"
#include "SnippetStore.h"
#include "SymbolView.h"
#include "UiTheme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

AddCategoryDialog::AddCategoryDialog(SnippetStore& store, AddHandler onAdd,
                                 QWidget* parent)
    : QDialog(parent), m_store(store), m_onAdd(std::move(onAdd)) {
    setObjectName(QStringLiteral("addCategoryView"));
    setWindowTitle(tr("New Category"));
    setWindowModality(Qt::WindowModal);
    setFixedSize(sheetWidth, sheetHeight);

    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(0, 0, 0, 0);
    root->setSpacing(0);

    auto* header = new FormBand(this);
    auto* headerRow = new QHBoxLayout(header);
    headerRow->setContentsMargins(24, 16, 24, 16);
    headerRow->addWidget(
        FormParts::text(tr("New Category"), UiTheme::title2(), header));
    headerRow->addStretch();
    root->addWidget(header);
    root->addWidget(new Divider(Qt::Horizontal, this));

    auto* body = new QVBoxLayout();
    body->setContentsMargins(32, 24, 32, 24);
    body->setSpacing(8);
    body->addWidget(FormParts::heading(tr("Name"),
                                       tr("Enter a descriptive name for your category"),
                                       this));
    m_nameFrame = new InputFieldFrame(8, 10, this);
    m_nameFrame->row()->addWidget(
        FormParts::symbol(QStringLiteral("folder"), 16, QColor(), m_nameFrame));
    m_nameField = new FocusableTextField(tr("Enter category name\u2026"), m_nameFrame);
    m_nameField->setAccessibleName(tr("Category name"));
    m_nameField->setObjectName(QStringLiteral("nameField"));
    m_nameField->setFont(UiTheme::body());
    m_nameFrame->row()->addWidget(m_nameField, 1);
    body->addWidget(m_nameFrame);
    m_errorRow =
        FormParts::errorRow(tr("A category with this name already exists"), this);
    m_errorRow->setObjectName(QStringLiteral("duplicateError"));
    m_errorRow->setVisible(false);
    body->addWidget(m_errorRow);
    body->addStretch(1);
    root->addLayout(body, 1);
    root->addWidget(new Divider(Qt::Horizontal, this));

    const FormParts::AddFooter footer = FormParts::addFooter(this, tr("Add Category"));
    m_cancelButton = footer.cancel;
    m_addButton = footer.add;
    root->addWidget(footer.band);

    connect(m_addButton, &QAbstractButton::clicked, this, &AddCategoryDialog::add);
    // One field: Return submits it, as Ctrl+Return does.
    connect(m_nameField, &QLineEdit::returnPressed, this, [this] {
        if (m_addButton->isEnabled())
            m_addButton->click();
    });
    connect(m_nameField, &FocusableTextField::editingChanged, this, [this](bool editing) {
        m_isNameFieldFocused = editing;
        m_nameFrame->setHighlighted(editing);
    });
    connect(m_nameField, &QLineEdit::textChanged, this, [this] {
        setShowingDuplicateError(false);
        m_addButton->setEnabled(!name().isEmpty());
    });
    m_addButton->setEnabled(false);
}

QString AddCategoryDialog::name() const {
    return m_nameField->text();
}

void AddCategoryDialog::setShowingDuplicateError(bool showing) {
    m_showingDuplicateError = showing;
    m_errorRow->setVisible(showing);
}

void AddCategoryDialog::add() {
    const QString name = this->name();
    if (name.isEmpty())
        return;
    if (FormParts::refused(m_store.addCategory(name), this)) {
        setShowingDuplicateError(true);
        return;
    }
    for (const Category& category : m_store.categories()) {
        if (category.name == name) {
            if (m_onAdd)
                m_onAdd(category);
            break;
        }
    }
    accept();
}
