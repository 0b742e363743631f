#include "LibraryTransfer.h"

#include "ContentView.h"
#include "ImportDialog.h"
#include "ImportJob.h"
#include "SnippetStore.h"
#include "TypoletLibraryFile.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProgressDialog>
#include <QStandardPaths>

LibraryTransfer::LibraryTransfer(SnippetStore& store, ContentView& view, QObject* parent)
    : QObject(parent), m_store(store), m_view(view),
      m_import(new QAction(tr("Import\u2026"), this)),
      m_importFolder(new QAction(tr("Import AutoKey Folder\u2026"), this)),
      m_export(new QAction(tr("Export\u2026"), this)),
      m_exportCategory(new QAction(tr("Export Category\u2026"), this)) {
    connect(m_import, &QAction::triggered, this, &LibraryTransfer::importFile);
    connect(m_importFolder, &QAction::triggered, this, &LibraryTransfer::importFolder);
    connect(m_export, &QAction::triggered, this, &LibraryTransfer::exportLibrary);
    connect(m_exportCategory, &QAction::triggered, this, &LibraryTransfer::exportCategory);
    connect(&m_view, &ContentView::selectionChanged, this, &LibraryTransfer::updateExportCategory);
    connect(&m_store, &SnippetStore::categoriesChanged, this,
            &LibraryTransfer::updateExportCategory);
    updateExportCategory();
}

QList<QAction*> LibraryTransfer::actions() const {
    return {m_import, m_importFolder, m_export, m_exportCategory};
}

ImportDialog* LibraryTransfer::importDialog() const {
    return m_importDialog;
}

ImportJob* LibraryTransfer::importJob() const {
    return m_importJob;
}

QProgressDialog* LibraryTransfer::importProgress() const {
    return m_importProgress;
}

QString LibraryTransfer::startFolder() const {
    return m_lastFolder.isEmpty()
               ? QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)
               : m_lastFolder;
}

void LibraryTransfer::importFile() {
    const QString path = QFileDialog::getOpenFileName(
        m_view.window(), tr("Choose a File to Import"), startFolder(),
        tr("Snippet files (*.json *.yml *.yaml);;Typolet library (*.json);;espanso match file "
           "(*.yml *.yaml);;All files (*)"));
    if (!path.isEmpty())
        importFrom(path);
}

void LibraryTransfer::importFolder() {
    const QString path = QFileDialog::getExistingDirectory(
        m_view.window(), tr("Choose an AutoKey Folder to Import"), startFolder());
    if (!path.isEmpty())
        importFrom(path);
}

void LibraryTransfer::importFrom(const QString& path) {
    m_lastFolder = QFileInfo(path).absolutePath();
    if (m_importJob)
        m_importJob->cancel();
    // Deleted later throughout: a modal progress dialog runs events inside setValue().
    if (m_importProgress)
        m_importProgress->deleteLater();

    auto* job = new ImportJob(path, this);
    auto* progress = new QProgressDialog(tr("Reading “%1”…").arg(QFileInfo(path).fileName()),
                                         tr("Cancel"), 0, 1000, m_view.window());
    m_importJob = job;
    m_importProgress = progress;
    progress->setWindowTitle(tr("Import Snippets"));
    progress->setWindowModality(Qt::WindowModal);
    progress->setAutoClose(false);
    progress->setAutoReset(false);
    // Shown only when the reading lasts long enough to be noticed.
    progress->setMinimumDuration(400);
    progress->setValue(0);
    connect(job, &ImportJob::progressed, progress, &QProgressDialog::setValue);
    // The Cancel button, Escape and closing the window alike.
    const auto cancel = [job, progress] {
        job->cancel();
        progress->deleteLater();
    };
    connect(progress, &QProgressDialog::canceled, job, cancel);
    connect(progress, &QDialog::rejected, job, cancel);
    connect(job, &ImportJob::finished, this, &LibraryTransfer::showPlan);
    connect(job, &ImportJob::stopped, progress, &QObject::deleteLater);
    connect(job, &ImportJob::stopped, job, &QObject::deleteLater);
    job->start();
}

void LibraryTransfer::showPlan(const ImportPlan& plan) {
    if (m_importProgress)
        m_importProgress->deleteLater();
    const QString& path = plan.source;
    if (plan.failed()) {
        showError(tr("Import Failed"), plan.error);
        return;
    }
    if (plan.snippets.isEmpty() && plan.categories.isEmpty()) {
        showError(tr("Nothing to Import"),
                  tr("%1 holds no snippets that Typolet can use (%n entry(ies) left out).", nullptr,
                     plan.skipped)
                      .arg(path));
        return;
    }
    if (m_importDialog)
        m_importDialog->close();
    m_importDialog = new ImportDialog(m_store, plan, m_view.window());
    m_importDialog->setAttribute(Qt::WA_DeleteOnClose);
    m_importDialog->open();
}

void LibraryTransfer::exportLibrary() {
    exportTo(tr("Typolet Library"), m_store.categories(), m_store.snippets());
}

void LibraryTransfer::exportCategory() {
    const auto selected = m_view.selectedCategory();
    const auto category = selected ? m_store.category(selected->id) : std::nullopt;
    if (!category)
        return;
    QList<Snippet> snippets = m_store.snippets();
    snippets.removeIf([&](const Snippet& s) { return s.categoryId != category->id; });
    exportTo(category->name, {*category}, snippets);
}

void LibraryTransfer::exportTo(const QString& suggestedName, const QList<Category>& categories,
                               const QList<Snippet>& snippets) {
    const QString path = QFileDialog::getSaveFileName(
        m_view.window(), tr("Export Snippets"),
        QDir(startFolder()).filePath(suggestedName + QStringLiteral(".json")),
        tr("Typolet library (*.json)"));
    if (path.isEmpty())
        return;
    m_lastFolder = QFileInfo(path).absolutePath();
    if (const auto error = TypoletLibraryFile::write(path, categories, snippets))
        showError(tr("Export Failed"), *error);
}

void LibraryTransfer::showError(const QString& title, const QString& message) {
    auto* alert =
        new QMessageBox(QMessageBox::Warning, title, message, QMessageBox::Ok, m_view.window());
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(Qt::WindowModal);
    alert->open();
}

void LibraryTransfer::updateExportCategory() {
    const auto selected = m_view.selectedCategory();
    const auto category = selected ? m_store.category(selected->id) : std::nullopt;
    m_exportCategory->setEnabled(category.has_value());
    m_exportCategory->setText(category ? tr("Export \u201C%1\u201D\u2026").arg(category->name)
                                       : tr("Export Category\u2026"));
}
