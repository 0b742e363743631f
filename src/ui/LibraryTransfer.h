#pragma once

#include "Category.h"
#include "ImportPlan.h"
#include "Snippet.h"

#include <QObject>
#include <QPointer>

class ContentView;
class ImportDialog;
class ImportJob;
class QAction;
class QProgressDialog;
class SnippetStore;

// The File menu's way in and out of the library: Import… (a Typolet library file or an
// espanso match file), Import AutoKey Folder…, Export… (the whole library) and Export Category…
// (the category selected in the editor, enabled while there is one). Files are picked with the
// desktop's file dialogs; the file is read away from the window's thread (ImportJob), with a
// progress dialog whose Cancel stops the reading; what an import would add is then shown in an
// ImportDialog; errors are shown in a message box over the editor's window.
class LibraryTransfer : public QObject {
    Q_OBJECT
public:
    LibraryTransfer(SnippetStore& store, ContentView& view, QObject* parent = nullptr);

    // In menu order; owned by this object.
    QList<QAction*> actions() const;

    void importFile();
    void importFolder();
    // Starts reading `path` (a file or a phrase folder); once read, shows what it would add,
    // or why it cannot. A read still running is cancelled.
    void importFrom(const QString& path);
    void exportLibrary();
    void exportCategory();

    // The open import dialog, the reading in progress and its progress dialog, or null.
    ImportDialog* importDialog() const;
    ImportJob* importJob() const;
    QProgressDialog* importProgress() const;

private:
    void showPlan(const ImportPlan& plan);
    void exportTo(const QString& suggestedName, const QList<Category>& categories,
                  const QList<Snippet>& snippets);
    void showError(const QString& title, const QString& message);
    void updateExportCategory();
    QString startFolder() const;

    SnippetStore& m_store;
    ContentView& m_view;
    QAction* m_import;
    QAction* m_importFolder;
    QAction* m_export;
    QAction* m_exportCategory;
    QPointer<ImportDialog> m_importDialog;
    QPointer<ImportJob> m_importJob;
    QPointer<QProgressDialog> m_importProgress;
    QString m_lastFolder;
};
