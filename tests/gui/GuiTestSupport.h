#pragma once

#include "Category.h"
#include "ContentView.h"
#include "Snippet.h"
#include "SnippetForm.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"
#include "TestData.h"

#include <QAbstractButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <memory>

class CategoryRowView;
class QAbstractItemView;
class QListView;

// A store over its own temporary settings file and, once shown, the editor window.
class EditorFixture {
public:
    // `storedCategories` are written to the settings file first, as if an earlier run saved them.
    explicit EditorFixture(const QList<Category>& storedCategories = {});
    ~EditorFixture();

    SnippetStore& store() { return *m_store; }
    TemporarySettings& settings() { return m_settings; }
    Category addCategory(const QString& name);
    // Appends and saves a snippet the way the editor does.
    Snippet addSnippet(const QString& command, const QString& content, const QUuid& categoryId);
    // Shows the window, active, with `category` selected when one is given.
    ContentView* show(const std::optional<Category>& category = std::nullopt);
    // Reads the store back from disk, as the next start of the program would.
    std::unique_ptr<SnippetStore> reloaded() const {
        return std::make_unique<SnippetStore>(m_settings.path());
    }

private:
    TemporarySettings m_settings;
    std::unique_ptr<SnippetStore> m_store;
    std::unique_ptr<ContentView> m_window; // a window of its own, as in the program
};

// Input as the user gives it.
class GuiInput {
public:
    static void click(QAbstractButton* button) {
        QTest::mouseClick(button, Qt::LeftButton, {}, button->rect().center());
    }
    // Clicks `button`; true once the dialog or message box it belongs to is closed and deleted.
    static bool clickCloses(QAbstractButton* button);
    // Clicks a list row left of its middle, clear of any buttons at its right end.
    static void clickRow(QListView* list, int row, Qt::KeyboardModifiers modifiers = {});
    // Clicks the trash symbol of a snippet row.
    static void clickTrash(QListView* list, int row);
    // Replaces a field's text by typing (select all, then type).
    static void retype(QWidget* field, const QString& text);
    // Types text the way an input method commits it: any script, emoji included.
    static void commitText(QWidget* widget, const QString& text);

    // Waits until `window` is the active window (key bindings need that).
    static bool waitActive(QWidget* window);
    // Clicks `button`; returns the dialog `dialog()` gives once it has the keyboard, or null.
    template <typename Getter> static auto openDialog(QAbstractButton* button, Getter dialog) {
        click(button);
        auto* opened = dialog();
        return waitActive(opened) ? opened : nullptr;
    }
    // Presses Tab `stops` times from where the keyboard is; the controls it went through, in
    // order ("class accessible name").
    static QStringList tabThrough(QWidget* window, int stops);
    // Clicks the button labelled `answer` of the open alert titled `title`; returns the alert's
    // message as plain text once it has closed, or "no alert".
    static QString answerAlert(const QString& title, const QString& answer);
};

// Answers the alert titled `title` with the button labelled `answer` (mnemonic marks ignored)
// as soon as it shows, also while it blocks in a loop of its own; gives up when destroyed.
class AlertAnswer {
public:
    AlertAnswer(const QString& title, const QString& answer);
    ~AlertAnswer();
    // The alert's message once it was answered; empty until then.
    QString message() const { return m_message; }
    bool answered() const { return !m_message.isEmpty(); }

private:
    std::unique_ptr<QTimer> m_timer;
    QString m_message;
};

// What the user reads.
namespace Shown {
// The rows of a list view by their display text, selected ones marked: {";a", "*;b"}.
QStringList rows(const QAbstractItemView* list);
// The snippet column: its title, then its rows as above.
QStringList snippets(const ContentView* view);
// A category row's "categoryName" or "categoryCount" label.
QString rowLabel(const CategoryRowView* row, const char* label);
} // namespace Shown

// The controls under `root` that the keyboard can reach (or that are shown as buttons) but
// that assistive technology would announce without a name: class and object name of each.
QStringList unnamedControls(QWidget* root);
// The controls under `window` that Tab never reaches, going round from where the keyboard is.
QStringList unreachableControls(QWidget* window);
