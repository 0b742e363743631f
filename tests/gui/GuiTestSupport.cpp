#include "GuiTestSupport.h"
#include "Translations.h"

#include "CategoryRowView.h"
#include "RecordCodec.h"
#include "SnippetRowDelegate.h"

#include <QAbstractScrollArea>
#include <QAccessible>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSet>
#include <QInputMethodEvent>
#include <QListView>
#include <QMessageBox>
#include <QPointer>
#include <QTextDocument>

namespace {
QString preparedPath(const TemporarySettings& settings, const QList<Category>& categories) {
    if (!categories.isEmpty())
        settings.write(QLatin1String(SnippetStore::categoriesKey),
                       *RecordCodec::encodeCategories(categories));
    return settings.path();
}
} // namespace

EditorFixture::EditorFixture(const QList<Category>& storedCategories)
    : m_store(std::make_unique<SnippetStore>(preparedPath(m_settings, storedCategories))) {
    // The texts as the program shows them, plural forms included.
    static const bool translated = (Translations::install(*QCoreApplication::instance()), true);
    Q_UNUSED(translated);
}

EditorFixture::~EditorFixture() {
    m_window.reset();
    // Dialogs and message boxes parented to the window are gone with it; drain deferred deletes.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

Category EditorFixture::addCategory(const QString& name) {
    if (m_store->addCategory(name))
        qFatal("category %s already exists", qPrintable(name));
    return m_store->categories().last();
}

Snippet EditorFixture::addSnippet(const QString& command, const QString& content,
                                    const QUuid& categoryId) {
    const Snippet snippet = Snippet::create(command, content, categoryId);
    m_store->appendSnippet(snippet);
    m_store->saveSnippets();
    return snippet;
}

ContentView* EditorFixture::show(const std::optional<Category>& category) {
    m_window = std::make_unique<ContentView>(*m_store);
    m_window->resize(1160, 680);
    m_window->show();
    if (!GuiInput::waitActive(m_window.get()))
        qFatal("the editor window never became active");
    if (category)
        m_window->setSelectedCategory(category);
    return m_window.get();
}

bool GuiInput::clickCloses(QAbstractButton* button) {
    const QPointer<QWidget> window = button->window();
    click(button);
    return QTest::qWaitFor([&window] { return window.isNull(); });
}

void GuiInput::clickRow(QListView* list, int row, Qt::KeyboardModifiers modifiers) {
    const QModelIndex index = list->model()->index(row, 0);
    list->scrollTo(index);
    const QRect rect = list->visualRect(index);
    // The click goes to whatever is drawn there (a row widget, a label in it).
    const QPoint point(rect.left() + rect.width() / 3, rect.center().y());
    QWidget* target = list->viewport()->childAt(point);
    if (!target)
        target = list->viewport();
    QTest::mouseClick(target, Qt::LeftButton, modifiers, target->mapFrom(list->viewport(), point));
}

void GuiInput::clickTrash(QListView* list, int row) {
    const QModelIndex index = list->model()->index(row, 0);
    list->scrollTo(index);
    const QRect rect = SnippetRowDelegate::trashRect(list->visualRect(index));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, rect.center());
}

void GuiInput::retype(QWidget* field, const QString& text) {
    field->setFocus(Qt::MouseFocusReason);
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    if (text.isEmpty())
        QTest::keyClick(field, Qt::Key_Backspace);
    else
        QTest::keyClicks(field, text);
}

void GuiInput::commitText(QWidget* widget, const QString& text) {
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(widget, &event);
}

bool GuiInput::waitActive(QWidget* window) {
    if (!window)
        return false;
    // Not isActiveWindow(): it can say yes for a dialog before the application agrees, and
    // key bindings go by the application.
    window->activateWindow();
    return QTest::qWaitFor([window] { return QApplication::activeWindow() == window; });
}

QString GuiInput::answerAlert(const QString& title, const QString& answer) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* alert = qobject_cast<QMessageBox*>(widget);
        if (!alert || !alert->isVisible() || alert->windowTitle() != title)
            continue;
        QTextDocument message; // rich text: a name's markup must have been escaped
        message.setHtml(alert->informativeText());
        for (QAbstractButton* button : alert->buttons())
            if (button->text() == answer)
                return clickCloses(button) ? message.toPlainText() : QStringLiteral("stays open");
        return QStringLiteral("no button ") + answer;
    }
    return QStringLiteral("no alert");
}

AlertAnswer::AlertAnswer(const QString& title, const QString& answer)
    : m_timer(std::make_unique<QTimer>()) {
    m_timer->setInterval(10);
    QObject::connect(m_timer.get(), &QTimer::timeout, [this, title, answer] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* alert = qobject_cast<QMessageBox*>(widget);
            if (!alert || !alert->isVisible() || alert->windowTitle() != title)
                continue;
            for (QAbstractButton* button : alert->buttons()) {
                if (QString(button->text()).remove(QLatin1Char('&')) != answer)
                    continue;
                m_message = alert->text();
                m_timer->stop();
                button->click();
                return;
            }
        }
    });
    m_timer->start();
}

AlertAnswer::~AlertAnswer() = default;

QStringList Shown::rows(const QAbstractItemView* list) {
    QStringList shown;
    for (int row = 0; row < list->model()->rowCount(); ++row) {
        const QModelIndex index = list->model()->index(row, 0);
        const bool selected = list->selectionModel()->isSelected(index);
        shown << (selected ? QStringLiteral("*") : QString()) + index.data().toString();
    }
    return shown;
}

QStringList Shown::snippets(const ContentView* view) {
    return QStringList{view->title()} + rows(view->snippetList());
}

QString Shown::rowLabel(const CategoryRowView* row, const char* label) {
    return row->findChild<QLabel*>(QString::fromLatin1(label))->text();
}

namespace {
QString describe(const QWidget* widget) {
    return QString::fromLatin1(widget->metaObject()->className()) + QLatin1Char(' ') +
           (widget->accessibleName().isEmpty() ? widget->objectName() : widget->accessibleName());
}

// A part of another control (a field's clear button, a spin box's line, a scroll bar), named
// and reached as that control.
bool isPartOfAnother(const QWidget* widget, const QWidget* root) {
    if (qobject_cast<const QAbstractScrollArea*>(widget->parentWidget()))
        return true;
    for (const QWidget* up = widget->parentWidget(); up && up != root; up = up->parentWidget())
        if (qobject_cast<const QLineEdit*>(up) || qobject_cast<const QAbstractSpinBox*>(up) ||
            qobject_cast<const QComboBox*>(up) || qobject_cast<const QKeySequenceEdit*>(up))
            return true;
    return false;
}

// A row's button in a list: the list is the stop, and keys act on its rows (Delete, F2).
bool isInList(const QWidget* widget, const QWidget* root) {
    for (const QWidget* up = widget->parentWidget(); up && up != root; up = up->parentWidget())
        if (qobject_cast<const QAbstractItemView*>(up))
            return true;
    return false;
}

bool isControl(const QWidget* widget) {
    return qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QLineEdit*>(widget) ||
           qobject_cast<const QAbstractItemView*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           qobject_cast<const QAbstractSpinBox*>(widget) ||
           qobject_cast<const QPlainTextEdit*>(widget) || qobject_cast<const QKeySequenceEdit*>(widget);
}
} // namespace

QStringList unnamedControls(QWidget* root) {
    QStringList unnamed;
    const QList<QWidget*> widgets = root->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        if (!widget->isVisibleTo(root))
            continue;
        const bool control = (widget->focusPolicy() & Qt::TabFocus) ||
                             qobject_cast<QAbstractButton*>(widget) != nullptr;
        if (!control || isPartOfAnother(widget, root))
            continue;
        QAccessibleInterface* access = QAccessible::queryAccessibleInterface(widget);
        if (access && !access->text(QAccessible::Name).trimmed().isEmpty())
            continue;
        unnamed << QString::fromLatin1(widget->metaObject()->className()) + QLatin1Char(' ') +
                       widget->objectName();
    }
    return unnamed;
}

QStringList GuiInput::tabThrough(QWidget* window, int stops) {
    QStringList order;
    for (int i = 0; i < stops; ++i) {
        QWidget* focus = QApplication::focusWidget();
        if (!focus)
            break;
        // A control's inner part (the line of a key sequence edit) stands for the control.
        QWidget* control = focus;
        while (control != window && !isControl(control) && control->parentWidget())
            control = control->parentWidget();
        order << describe(control);
        QTest::keyClick(focus, Qt::Key_Tab);
    }
    return order;
}

QStringList unreachableControls(QWidget* window) {
    // Once round the Tab chain, as the keyboard goes.
    QSet<QWidget*> reached;
    const QList<QWidget*> widgets = window->findChildren<QWidget*>();
    for (int i = 0; i < 2 * widgets.size() && QApplication::focusWidget(); ++i) {
        for (QWidget* up = QApplication::focusWidget(); up; up = up->parentWidget())
            reached.insert(up);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QStringList unreachable;
    for (QWidget* widget : widgets)
        if (widget->isVisibleTo(window) && widget->isEnabled() && isControl(widget) &&
            !isPartOfAnother(widget, window) && !isInList(widget, window) &&
            !reached.contains(widget))
            unreachable << describe(widget);
    return unreachable;
}
