#pragma once

#include "Category.h"
#include "ContentView.h"
#include "ContentWindow.h"
#include "Shortcut.h"
#include "ShortcutDataManager.h"
#include "TemporarySettings.h"

#include <QString>
#include <memory>

class QAbstractButton;
class QListView;
class QMessageBox;

// A store over its own temporary settings file, and (once show() is called) the editor in a
// window on the offscreen platform.
class EditorFixture {
public:
    // `storedCategories`, when given, are written to the settings file before the store loads
    // it, as if an earlier run had saved them.
    explicit EditorFixture(const QList<CategoryRef>& storedCategories = {});
    ~EditorFixture();

    ShortcutDataManager& store() { return *m_store; }
    TemporarySettings& settings() { return m_settings; }

    // Adds a category through the store and returns the object in its list.
    CategoryRef addCategory(const QString& name);
    // Appends and saves a snippet the way the editor does.
    Shortcut addShortcut(const QString& command, const QString& content, const QUuid& categoryId);

    // Builds and shows the window, active; returns its editor.
    ContentView* show();
    ContentView* view() const { return m_window ? m_window->contentView() : nullptr; }
    ContentWindow* window() const { return m_window.get(); }

    // Reads the store back from disk, as a fresh start of the program would.
    std::unique_ptr<ShortcutDataManager> reloadedStore() const;

private:
    TemporarySettings m_settings;
    std::unique_ptr<ShortcutDataManager> m_store;
    std::unique_ptr<ContentWindow> m_window;
};

// Input as the user gives it.
class GuiInput {
public:
    // Clicks the middle of a list row (row in the view's model).
    static void clickRow(QListView* list, int row, Qt::KeyboardModifiers modifiers = {});
    static void click(QAbstractButton* button);
    // Clicks the trash symbol of a snippet row.
    static void clickTrash(QListView* list, int row);
    // Replaces a line edit's text by typing (select all, then type).
    static void retype(QWidget* field, const QString& text);

    // Waits until `dialog` is the active window (keyboard shortcuts need that).
    static bool waitActive(QWidget* dialog);
    // Types text the way an input method commits it; unlike key clicks this carries any
    // script and emoji.
    static void commitText(QWidget* widget, const QString& text);
    // The open message box whose title is `title`, or null.
    static QMessageBox* findAlert(const QString& title);
    static void clickAlertButton(QMessageBox* alert, const QString& label);
};
