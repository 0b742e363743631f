#include "ApplicationLimitEditor.h"

#include "UiTheme.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>

using Kind = Category::Limit::Kind;

ApplicationLimitEditor::ApplicationLimitEditor(WindowClasses openWindows, QWidget* parent)
    : QWidget(parent), m_openWindowClasses(std::move(openWindows)) {
    setObjectName(QStringLiteral("applicationLimit"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);

    auto* title = new QLabel(tr("Expands"), this);
    column->addWidget(title);
    auto* row = new QHBoxLayout();
    m_kind = new QComboBox(this);
    m_kind->setObjectName(QStringLiteral("limitKind"));
    m_kind->setAccessibleName(tr("Where the snippets expand"));
    m_kind->addItem(tr("Everywhere"), int(Kind::everywhere));
    m_kind->addItem(tr("Only in\u2026"), int(Kind::onlyIn));
    m_kind->addItem(tr("Everywhere except\u2026"), int(Kind::exceptIn));
    title->setBuddy(m_kind);
    row->addWidget(m_kind);
    m_applications = new QLineEdit(this);
    m_applications->setObjectName(QStringLiteral("limitApplications"));
    m_applications->setAccessibleName(tr("Applications"));
    m_applications->setPlaceholderText(tr("Window classes, such as XTerm, firefox"));
    row->addWidget(m_applications, 1);
    m_openWindows = new QToolButton(this);
    m_openWindows->setObjectName(QStringLiteral("openWindows"));
    m_openWindows->setText(tr("Open Windows"));
    m_openWindows->setToolTip(tr("Add the class of a window that is open now"));
    m_openWindows->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(m_openWindows);
    menu->setObjectName(QStringLiteral("openWindowsMenu"));
    m_openWindows->setMenu(menu);
    // Read as the menu opens: the windows open then are the ones the user means.
    connect(menu, &QMenu::aboutToShow, this, &ApplicationLimitEditor::fillOpenWindowsMenu);
    row->addWidget(m_openWindows);
    column->addLayout(row);

    m_note = UiTheme::smallLabel(QString(), this);
    m_note->setObjectName(QStringLiteral("limitNote"));
    m_note->setWordWrap(true);
    column->addWidget(m_note);

    connect(m_kind, &QComboBox::activated, this, [this] {
        updateState();
        emit edited();
    });
    connect(m_applications, &QLineEdit::textEdited, this, [this] {
        updateState();
        emit edited();
    });
    updateState();
}

QStringList ApplicationLimitEditor::names(const QString& text) {
    QStringList names;
    for (const QString& part : text.split(QLatin1Char(','))) {
        const QString name = part.trimmed();
        if (!name.isEmpty() && !names.contains(name, Qt::CaseInsensitive))
            names.append(name);
    }
    return names;
}

Category::Limit ApplicationLimitEditor::limit() const {
    const auto kind = Kind(m_kind->currentData().toInt());
    if (kind == Kind::everywhere)
        return {};
    return {kind, names(m_applications->text())};
}

void ApplicationLimitEditor::setLimit(const Category::Limit& limit) {
    m_kind->setCurrentIndex(m_kind->findData(int(limit.limits() ? limit.kind : Kind::everywhere)));
    m_applications->setText(limit.limits() ? limit.applications.join(QStringLiteral(", ")) : QString());
    updateState();
}

void ApplicationLimitEditor::fillOpenWindowsMenu() {
    QMenu* menu = m_openWindows->menu();
    menu->clear();
    const QStringList classes = m_openWindowClasses ? m_openWindowClasses() : QStringList();
    const QStringList listed = names(m_applications->text());
    for (const QString& name : classes) {
        QAction* action = menu->addAction(name);
        action->setEnabled(!listed.contains(name, Qt::CaseInsensitive));
        connect(action, &QAction::triggered, this, [this, name] { addApplication(name); });
    }
    if (classes.isEmpty())
        menu->addAction(tr("No open windows were found"))->setEnabled(false);
}

void ApplicationLimitEditor::addApplication(const QString& name) {
    QStringList listed = names(m_applications->text());
    if (!listed.contains(name, Qt::CaseInsensitive))
        listed.append(name);
    m_applications->setText(listed.join(QStringLiteral(", ")));
    if (Kind(m_kind->currentData().toInt()) == Kind::everywhere)
        m_kind->setCurrentIndex(m_kind->findData(int(Kind::onlyIn)));
    updateState();
    emit edited();
}

void ApplicationLimitEditor::updateState() {
    const bool limited = Kind(m_kind->currentData().toInt()) != Kind::everywhere;
    m_applications->setEnabled(limited);
    m_openWindows->setEnabled(bool(m_openWindowClasses));
    QString note;
    if (!m_openWindowClasses)
        note = tr("This session does not tell which application has the focus (Wayland): the "
                  "snippets of a category limited to applications expand nowhere here.");
    else if (limited && names(m_applications->text()).isEmpty())
        note = tr("Name at least one application; without one the snippets expand everywhere.");
    m_note->setText(note);
    m_note->setVisible(!note.isEmpty());
}
