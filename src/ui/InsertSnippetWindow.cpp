#include "InsertSnippetWindow.h"

#include "InsertCandidateModel.h"
#include "PlaceholderText.h"
#include "SnippetStore.h"
#include "UsageStore.h"
#include "WindowPlacement.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QTreeView>
#include <QVBoxLayout>
#include <QtConcurrent/QtConcurrentRun>

namespace {
// Rows beyond these are not worth reading: a few more letters find the snippet sooner.
constexpr qsizetype shownRows = 200;
// Up to this many snippets the index is made at once (in a few milliseconds), so the list is
// never empty for want of it; above, on another thread, since 100,000 take most of a second.
constexpr qsizetype indexAtOnceUpTo = 2000;
} // namespace

InsertSnippetWindow::InsertSnippetWindow(SnippetStore& store, UsageStore& usage, QWidget* parent)
    : QWidget(parent, Qt::Dialog | Qt::WindowStaysOnTopHint), m_store(store), m_usage(usage),
      m_model(new InsertCandidateModel(this)), m_search(new QLineEdit(this)),
      m_list(new QTreeView(this)), m_preview(new QPlainTextEdit(this)), m_status(new QLabel(this)) {
    setObjectName(QStringLiteral("insertSnippetWindow"));
    setWindowTitle(tr("Insert Snippet"));
    setAccessibleName(tr("Insert Snippet"));
    setAttribute(Qt::WA_QuitOnClose, false);

    m_search->setObjectName(QStringLiteral("insertSearch"));
    m_search->setPlaceholderText(tr("Command, content or category"));
    m_search->setAccessibleName(tr("Search snippets"));
    m_search->setAccessibleDescription(
        tr("Up and Down choose a snippet, Return inserts it, Ctrl+C copies it, Escape closes"));
    m_search->setClearButtonEnabled(true);

    m_list->setObjectName(QStringLiteral("insertList"));
    m_list->setAccessibleName(tr("Snippets found"));
    m_list->setModel(m_model);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setItemsExpandable(false);
    m_list->setAllColumnsShowFocus(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(InsertCandidateModel::ContentColumn, QHeaderView::Stretch);
    m_list->setColumnWidth(InsertCandidateModel::CommandColumn, 130);
    m_list->setColumnWidth(InsertCandidateModel::CategoryColumn, 120);

    m_preview->setObjectName(QStringLiteral("insertPreview"));
    m_preview->setAccessibleName(tr("Preview of the selected snippet"));
    m_preview->setReadOnly(true);
    m_preview->setFocusPolicy(Qt::ClickFocus);
    m_preview->setFixedHeight(fontMetrics().lineSpacing() * 5 + 12);

    m_status->setObjectName(QStringLiteral("insertStatus"));
    m_status->setAccessibleName(tr("Search result"));
    m_status->setWordWrap(true);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_search);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_preview);
    layout->addWidget(m_status);
    setTabOrder(m_search, m_list);
    resize(640, 420);

    m_search->installEventFilter(this);
    m_list->installEventFilter(this);
    connect(m_search, &QLineEdit::textChanged, this, [this] {
        m_note.clear();
        search();
    });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &InsertSnippetWindow::updatePreview);
    connect(m_list, &QTreeView::activated, this, &InsertSnippetWindow::insertSelected);
    m_indexer.setMaxThreadCount(1);
    connect(&m_indexing, &QFutureWatcherBase::finished, this, [this] {
        adoptIndex(m_indexing.result());
        if (isVisible())
            search(); // also begins the next index if the library changed meanwhile
    });
    const auto libraryChanged = [this] {
        m_libraryChanged = true;
        // While the window is closed the index waits for it to open.
        if (isVisible())
            search();
    };
    connect(&m_store, &SnippetStore::categoriesChanged, this, libraryChanged);
    connect(&m_store, &SnippetStore::snippetsChanged, this, libraryChanged);
    connect(&m_usage, &UsageStore::usageChanged, this, [this] { m_usageChanged = true; });
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this,
            [this] { m_clipboard.reset(); });
}

InsertSnippetWindow::~InsertSnippetWindow() {
    // The index being made is thrown away; its thread holds nothing of this window.
    m_indexing.disconnect(this);
    m_indexer.waitForDone();
}

void InsertSnippetWindow::present(const QRect& around) {
    m_note.clear();
    m_clipboard.reset();
    if (m_search->text().isEmpty())
        search();
    else
        m_search->clear(); // searches again
    move(WindowPlacement::topLeft(size(), around));
    show();
    raise();
    activateWindow();
    m_search->setFocus();
}

void InsertSnippetWindow::showNote(const QString& note) {
    m_note = note;
    search();
}

void InsertSnippetWindow::prepare() {
    if (!m_libraryChanged || m_indexing.isRunning())
        return; // a change during the run is taken up when it ends
    m_libraryChanged = false;
    QList<Snippet> snippets = m_store.snippets();
    QList<Category> categories = m_store.categories();
    std::shared_ptr<const SnippetIndex> previous = m_searcher.index();
    if (snippets.size() <= indexAtOnceUpTo) {
        adoptIndex(std::make_shared<const SnippetIndex>(std::move(snippets), categories,
                                                        previous.get()));
        return;
    }
    m_indexing.setFuture(QtConcurrent::run(
        &m_indexer, [snippets = std::move(snippets), categories = std::move(categories),
                     previous = std::move(previous)] {
            return std::make_shared<const SnippetIndex>(snippets, categories, previous.get());
        }));
}

void InsertSnippetWindow::adoptIndex(std::shared_ptr<const SnippetIndex> index) {
    m_categoryNames.clear();
    for (const Category& category : m_store.categories())
        m_categoryNames.insert(category.id, category.name);
    m_searcher.setIndex(std::move(index));
    m_indexed = true;
    m_usageChanged = true;
}

void InsertSnippetWindow::search() {
    prepare();
    if (!m_indexed) {
        m_model->setRows({}, {}, {});
        updatePreview();
        m_status->setText(tr("Preparing the search…"));
        return;
    }
    if (std::exchange(m_usageChanged, false))
        m_searcher.setUsage(m_usage.usage());
    const SnippetSearch::Result found = m_searcher.rank(m_search->text(), shownRows);
    m_matches = found.matches;
    m_model->setRows(m_searcher.index()->snippets(), m_categoryNames, found.rows);
    if (!found.rows.isEmpty())
        m_list->setCurrentIndex(m_model->index(0, 0));
    updatePreview();

    QString status;
    if (m_store.snippets().isEmpty())
        status = tr("There are no snippets yet: add some in the Typolet window.");
    else if (m_matches == 0)
        status = tr("No snippet matches “%1”.").arg(m_search->text().trimmed());
    else if (m_matches > found.rows.size())
        status = tr("Snippets found: %1, the best %2 shown.").arg(m_matches).arg(found.rows.size());
    else
        status = tr("Snippets found: %1").arg(m_matches);
    m_status->setText(m_note.isEmpty() ? status : m_note);
}

QString InsertSnippetWindow::filledContent(const Snippet& snippet,
                                           const std::optional<QString>& clipboard) {
    const PlaceholderText placeholders(snippet.content);
    return placeholders.render(QDateTime::currentDateTime(), clipboard, QLocale()).text;
}

std::optional<QString> InsertSnippetWindow::clipboardText() {
    if (!m_clipboard) {
        // Read once while the window shows: on X11 each read asks the program that owns it.
        const QMimeData* data = QGuiApplication::clipboard()->mimeData();
        m_clipboard = data && data->hasText() ? std::optional<QString>(data->text())
                                              : std::optional<QString>();
    }
    return *m_clipboard;
}

void InsertSnippetWindow::updatePreview() {
    const auto snippet = selectedSnippet();
    if (!snippet) {
        m_preview->clear();
        return;
    }
    const bool readsClipboard =
        PlaceholderText(snippet->content).uses(PlaceholderText::Kind::Clipboard);
    m_preview->setPlainText(
        filledContent(*snippet, readsClipboard ? clipboardText() : std::nullopt));
}

QString InsertSnippetWindow::previewText() const { return m_preview->toPlainText(); }
QString InsertSnippetWindow::statusText() const { return m_status->text(); }

std::optional<Snippet> InsertSnippetWindow::selectedSnippet() const {
    const QModelIndex current = m_list->currentIndex();
    if (!current.isValid())
        return std::nullopt;
    return m_model->snippetAt(current.row());
}

void InsertSnippetWindow::moveSelection(int by) {
    const int rows = m_model->rowCount();
    if (rows == 0)
        return;
    const int row = std::clamp(m_list->currentIndex().row() + by, 0, rows - 1);
    m_list->setCurrentIndex(m_model->index(row, 0));
}

std::optional<Snippet> InsertSnippetWindow::currentSelectedSnippet() const {
    // The list may show the library as it was a moment ago, while its index is made again.
    const auto shown = selectedSnippet();
    return shown ? m_store.snippet(shown->id) : std::nullopt;
}

void InsertSnippetWindow::insertSelected() {
    const auto snippet = currentSelectedSnippet();
    if (!snippet)
        return;
    hide();
    emit insertRequested(*snippet);
}

void InsertSnippetWindow::copySelected() {
    const auto snippet = currentSelectedSnippet();
    if (!snippet)
        return;
    const bool readsClipboard =
        PlaceholderText(snippet->content).uses(PlaceholderText::Kind::Clipboard);
    const QString text = filledContent(*snippet, readsClipboard ? clipboardText() : std::nullopt);
    QGuiApplication::clipboard()->setText(text);
    hide();
    emit copied(*snippet);
}

void InsertSnippetWindow::closeEvent(QCloseEvent* event) {
    QWidget::closeEvent(event);
    emit dismissed();
}

bool InsertSnippetWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
        return QWidget::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    const int page = std::max(1, m_list->viewport()->height() /
                                     std::max(1, m_list->sizeHintForRow(0)) - 1);
    std::function<void()> action;
    if (key->matches(QKeySequence::Copy))
        action = [this] { copySelected(); };
    else if (key->key() == Qt::Key_Escape)
        action = [this] { close(); };
    else if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)
        action = [this] { insertSelected(); };
    else if (watched == m_search && key->key() == Qt::Key_Down)
        action = [this] { moveSelection(1); };
    else if (watched == m_search && key->key() == Qt::Key_Up)
        action = [this] { moveSelection(-1); };
    else if (watched == m_search && key->key() == Qt::Key_PageDown)
        action = [this, page] { moveSelection(page); };
    else if (watched == m_search && key->key() == Qt::Key_PageUp)
        action = [this, page] { moveSelection(-page); };
    if (!action)
        return QWidget::eventFilter(watched, event);
    // Claimed before any shortcut or the field's own Copy can take the key.
    event->accept();
    if (event->type() == QEvent::KeyPress)
        action();
    return true;
}
