#pragma once

#include "Snippet.h"
#include "SnippetSearch.h"

#include <QFutureWatcher>
#include <QThreadPool>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

class InsertCandidateModel;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QTreeView;
class SnippetStore;
class UsageStore;

// The small window that finds a snippet by its command, content or category and sends it to
// the application the user was typing in: a search field, the ranked list under it, and a
// preview of the selected snippet as it would go out now (placeholders filled).
//
// Keys: typing searches; Up, Down, Page Up and Page Down move through the list; Return
// inserts the selected snippet; Ctrl+C puts its content on the clipboard instead; Escape
// closes. The window itself inserts nothing: it asks through insertRequested(), after it has
// hidden itself, so that the application's window can have the focus back first.
class InsertSnippetWindow : public QWidget {
    Q_OBJECT
public:
    InsertSnippetWindow(SnippetStore& store, UsageStore& usage, QWidget* parent = nullptr);
    ~InsertSnippetWindow() override;

    // Shows the window with an empty search, centred on the screen that holds `around` (the
    // window the user was typing in; the primary screen when it is empty), and takes the focus.
    void present(const QRect& around = {});
    // A line under the list, for what happened to the last request (shown until the next).
    void showNote(const QString& note);

    QLineEdit* searchField() const { return m_search; }
    QTreeView* list() const { return m_list; }
    QString previewText() const;
    QString statusText() const;
    // The selected snippet, if the list has any.
    std::optional<Snippet> selectedSnippet() const;

    // The content as it goes out now: placeholders filled, {{cursor}} left out.
    static QString filledContent(const Snippet& snippet, const std::optional<QString>& clipboard);

signals:
    // Return was pressed on `snippet`; the window has closed.
    void insertRequested(const Snippet& snippet);
    // Ctrl+C put `snippet`'s content on the clipboard; the window has closed.
    void copied(const Snippet& snippet);
    // Escape or the window's close button: closed with nothing sent.
    void dismissed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    // Folds the library's texts for searching if they changed since the last time: a small
    // library at once, a large one on another thread (search() then shows the last index, or
    // says it is preparing, until it is done).
    void prepare();
    void adoptIndex(std::shared_ptr<const SnippetIndex> index);
    void search();
    void updatePreview();
    // The selected snippet as the library holds it now; none if it was deleted meanwhile.
    std::optional<Snippet> currentSelectedSnippet() const;
    void moveSelection(int by);
    void insertSelected();
    void copySelected();
    std::optional<QString> clipboardText();

    SnippetStore& m_store;
    UsageStore& m_usage;
    SnippetSearch m_searcher;
    bool m_indexed = false;     // m_searcher holds an index of the library
    bool m_libraryChanged = true; // since the index in use or being made was begun
    bool m_usageChanged = true;
    QHash<QUuid, QString> m_categoryNames;
    InsertCandidateModel* m_model;
    QLineEdit* m_search;
    QTreeView* m_list;
    QPlainTextEdit* m_preview;
    QLabel* m_status;
    QString m_note;
    // Makes the index of a large library, one at a time; the library is only indexed once the
    // window is first asked for, and again after each change.
    QThreadPool m_indexer;
    QFutureWatcher<std::shared_ptr<const SnippetIndex>> m_indexing;
    qsizetype m_matches = 0;
    // The clipboard's text as read for the preview, until it changes.
    std::optional<std::optional<QString>> m_clipboard;
};
