#include "GuiTestSupport.h"

#include "RecordCodec.h"
#include "ShortcutRowView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QInputMethodEvent>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

namespace {
QString preparedPath(const TemporarySettings& settings, const QList<CategoryRef>& categories) {
    if (!categories.isEmpty())
        settings.write(QLatin1String(ShortcutDataManager::categoriesKey),
                       *RecordCodec::encodeCategories(categories));
    return settings.path();
}
} // namespace

EditorFixture::EditorFixture(const QList<CategoryRef>& storedCategories)
    : m_store(std::make_unique<ShortcutDataManager>(preparedPath(m_settings, storedCategories))) {}

EditorFixture::~EditorFixture() {
    m_window.reset();
    // Sheets and alerts parented to the window are gone with it; drain deferred deletes.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

CategoryRef EditorFixture::addCategory(const QString& name) {
    if (m_store->addCategory(name))
        qFatal("category %s already exists", qPrintable(name));
    return m_store->categories().last();
}

Shortcut EditorFixture::addShortcut(const QString& command, const QString& content,
                                    const QUuid& categoryId) {
    const Shortcut shortcut = Shortcut::create(command, content, categoryId);
    m_store->appendShortcut(shortcut);
    m_store->saveShortcuts();
    return shortcut;
}

ContentView* EditorFixture::show() {
    m_window = std::make_unique<ContentWindow>(*m_store);
    m_window->show();
    if (!GuiInput::waitActive(m_window.get()))
        qFatal("the editor window never became active");
    return m_window->contentView();
}

std::unique_ptr<ShortcutDataManager> EditorFixture::reloadedStore() const {
    return std::make_unique<ShortcutDataManager>(m_settings.path());
}

void GuiInput::clickRow(QListView* list, int row, Qt::KeyboardModifiers modifiers) {
    const QModelIndex index = list->model()->index(row, 0);
    list->scrollTo(index);
    const QRect rect = list->visualRect(index);
    // Left of the middle: clear of any buttons at the row's right end. The click goes to
    // whatever is drawn there (a row widget, a label in it), as a real click would.
    const QPoint point(rect.left() + rect.width() / 3, rect.center().y());
    QWidget* target = list->viewport()->childAt(point);
    if (!target)
        target = list->viewport();
    QTest::mouseClick(target, Qt::LeftButton, modifiers, target->mapFrom(list->viewport(), point));
}

void GuiInput::clickTrash(QListView* list, int row) {
    const QModelIndex index = list->model()->index(row, 0);
    list->scrollTo(index);
    const QRect rect = ShortcutRowView::trashRect(list->visualRect(index));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, rect.center());
}

void GuiInput::click(QAbstractButton* button) {
    QTest::mouseClick(button, Qt::LeftButton, {}, button->rect().center());
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

bool GuiInput::waitActive(QWidget* dialog) {
    if (!dialog)
        return false;
    // isActiveWindow() can answer yes for a sheet before the application has made it the
    // active window; keyboard shortcuts go by the application's view.
    dialog->activateWindow();
    return QTest::qWaitFor([dialog] { return QApplication::activeWindow() == dialog; }, 5000);
}

QMessageBox* GuiInput::findAlert(const QString& title) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QMessageBox*>(widget);
        if (box && box->isVisible() && box->windowTitle() == title)
            return box;
    }
    return nullptr;
}

void GuiInput::clickAlertButton(QMessageBox* alert, const QString& label) {
    for (QAbstractButton* button : alert->buttons()) {
        if (button->text() == label) {
            click(button);
            return;
        }
    }
    qFatal("no button %s in the alert", qPrintable(label));
}
