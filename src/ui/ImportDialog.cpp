#include "ImportDialog.h"

#include "StoreMessages.h"
#include "ImportCandidateModel.h"
#include "ResolutionDelegate.h"
#include "SnippetStore.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

ImportDialog::ImportDialog(SnippetStore& store, ImportPlan plan, QWidget* parent)
    : QDialog(parent), m_store(store),
      m_model(new ImportCandidateModel(store, std::move(plan), this)),
      m_table(new QTableView(this)), m_allClashes(new QComboBox(this)),
      m_summary(new QLabel(this)) {
    setWindowTitle(tr("Import Snippets"));
    setWindowModality(Qt::WindowModal);
    resize(760, 480);
    const ImportPlan& candidates = m_model->plan();
    const int clashes = m_model->clashCount();

    for (const auto resolution : {ImportPlan::Resolution::skip, ImportPlan::Resolution::keepBoth,
                                  ImportPlan::Resolution::replace})
        m_allClashes->addItem(ImportCandidateModel::resolutionName(resolution), int(resolution));

    m_table->setModel(m_model);
    m_table->setItemDelegateForColumn(ImportCandidateModel::clashColumn,
                                      new ResolutionDelegate(m_table));
    // A click, or any key on the current row, opens a clash's choice.
    m_table->setEditTriggers(QAbstractItemView::AllEditTriggers);
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    m_table->setWordWrap(false);
    // Rows of one height are laid out without asking each row its size.
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->horizontalHeader()->setSectionResizeMode(ImportCandidateModel::contentColumn,
                                                      QHeaderView::Stretch);
    // Sized from the first rows only (the header's sampling), never all of them.
    m_table->resizeColumnToContents(ImportCandidateModel::commandColumn);
    m_table->setColumnWidth(
        ImportCandidateModel::clashColumn,
        qMax(m_allClashes->sizeHint().width(),
             m_table->horizontalHeader()->sectionSizeHint(ImportCandidateModel::clashColumn)));
    m_table->setColumnHidden(ImportCandidateModel::clashColumn, clashes == 0);

    const QString source = QFileInfo(candidates.source).fileName();
    QStringList summary{
        tr("%n snippet(s) to import from \u201C%1\u201D.", nullptr, int(candidates.snippets.size()))
            .arg(source)};
    if (candidates.skipped > 0)
        summary.append(tr("%n entry(ies) of it cannot become snippets and will be left out.",
                          nullptr, candidates.skipped));
    if (!candidates.leftOut.isEmpty())
        summary.append(tr("Left out: %1. Typolet cannot do these.")
                           .arg(candidates.leftOut.join(QStringLiteral(", "))));
    if (!candidates.typedAsWritten.isEmpty())
        summary.append(tr("Typed as written: %1. Typolet has no placeholder for these.")
                           .arg(candidates.typedAsWritten.join(QStringLiteral(", "))));
    if (clashes > 0)
        summary.append(tr("%n command(s) are already in your library: choose what to do "
                          "with each.",
                          nullptr, clashes));
    m_summary->setText(summary.join(QLatin1Char(' ')));
    m_summary->setWordWrap(true);

    // Shown only when some command is in the library already.
    auto* allClashesRow = new QWidget(this);
    auto* allRow = new QHBoxLayout(allClashesRow);
    allRow->setContentsMargins(0, 0, 0, 0);
    allRow->addWidget(new QLabel(tr("For every command already in the library:"), allClashesRow));
    m_allClashes->setParent(allClashesRow);
    allRow->addWidget(m_allClashes);
    allRow->addStretch();
    allClashesRow->setVisible(clashes > 0);
    connect(m_allClashes, &QComboBox::activated, this, [this] {
        m_model->setAllResolutions(ImportPlan::Resolution(m_allClashes->currentData().toInt()));
    });

    auto* buttons = new QDialogButtonBox(this);
    m_importButton = buttons->addButton(tr("Import"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QDialogButtonBox::Cancel);
    m_importButton->setDefault(true);
    m_importButton->setEnabled(!candidates.snippets.isEmpty() || !candidates.categories.isEmpty());
    connect(buttons, &QDialogButtonBox::accepted, this, &ImportDialog::import);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(m_table, 1);
    layout->addWidget(allClashesRow);
    layout->addWidget(buttons);
}

const ImportPlan& ImportDialog::plan() const {
    return m_model->plan();
}

int ImportDialog::clashCount() const {
    return m_model->clashCount();
}

void ImportDialog::import() {
    const std::optional<DataError> error = m_store.importSnippets(m_model->plan());
    accept();
    if (!error)
        return;
    auto* alert = new QMessageBox(QMessageBox::Warning, tr("Import Failed"), StoreMessages::text(*error),
                                  QMessageBox::Ok, parentWidget());
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(Qt::WindowModal);
    alert->open();
}
