#include "ImportDialog.h"

#include "SnippetStore.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {
enum Column { commandColumn, contentColumn, categoryColumn, clashColumn, columnCount };

// The content's first line, cut short: enough to recognise the snippet in a row.
QString startOf(const QString& content) {
    constexpr qsizetype shown = 60;
    const QString line = content.section(QLatin1Char('\n'), 0, 0);
    const bool cut = line.size() > shown || line.size() < content.trimmed().size();
    return line.left(shown) + (cut ? QStringLiteral("\u2026") : QString());
}

QTableWidgetItem* readOnlyItem(const QString& text) {
    auto* item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    return item;
}
} // namespace

ImportDialog::ImportDialog(SnippetStore& store, ImportPlan plan, QWidget* parent)
    : QDialog(parent), m_store(store), m_plan(std::move(plan)),
      m_table(new QTableWidget(int(m_plan.snippets.size()), columnCount, this)),
      m_allClashes(makeResolutionChoice()), m_summary(new QLabel(this)) {
    setWindowTitle(tr("Import Snippets"));
    setWindowModality(Qt::WindowModal);
    resize(760, 480);
    m_plan.resolutions.resize(m_plan.snippets.size(), ImportPlan::Resolution::skip);

    m_table->setHorizontalHeaderLabels(
        {tr("Command"), tr("Content"), tr("Category"), tr("Command Already Exists")});
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setSectionResizeMode(contentColumn, QHeaderView::Stretch);
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const Snippet& candidate = m_plan.snippets[row];
        m_table->setItem(row, commandColumn, readOnlyItem(candidate.command));
        m_table->setItem(row, contentColumn, readOnlyItem(startOf(candidate.content)));
        m_table->setItem(row, categoryColumn, readOnlyItem(categoryName(candidate.categoryId)));
        if (!m_store.snippetWithCommand(candidate.command)) {
            m_table->setItem(row, clashColumn, readOnlyItem(QString()));
            continue;
        }
        ++m_clashCount;
        QComboBox* choice = makeResolutionChoice();
        connect(choice, &QComboBox::currentIndexChanged, this, [this, row, choice] {
            m_plan.resolutions[row] = ImportPlan::Resolution(choice->currentData().toInt());
        });
        m_table->setCellWidget(row, clashColumn, choice);
    }
    m_table->resizeColumnToContents(commandColumn);
    m_table->resizeColumnToContents(clashColumn);

    const QString source = QFileInfo(m_plan.source).fileName();
    QStringList summary{
        tr("%n snippet(s) to import from \u201C%1\u201D.", nullptr, int(m_plan.snippets.size()))
            .arg(source)};
    if (m_plan.skipped > 0)
        summary.append(tr("%n entry(ies) of it cannot become snippets and will be left out.",
                          nullptr, m_plan.skipped));
    if (m_clashCount > 0)
        summary.append(tr("%n command(s) are already in your library: choose what to do "
                          "with each.",
                          nullptr, m_clashCount));
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
    allClashesRow->setVisible(m_clashCount > 0);
    m_table->setColumnHidden(clashColumn, m_clashCount == 0);
    connect(m_allClashes, &QComboBox::activated, this, [this] {
        for (int row = 0; row < m_table->rowCount(); ++row) {
            if (QComboBox* choice = resolutionChoice(row))
                choice->setCurrentIndex(m_allClashes->currentIndex());
        }
    });

    auto* buttons = new QDialogButtonBox(this);
    m_importButton = buttons->addButton(tr("Import"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QDialogButtonBox::Cancel);
    m_importButton->setDefault(true);
    m_importButton->setEnabled(!m_plan.snippets.isEmpty() || !m_plan.categories.isEmpty());
    connect(buttons, &QDialogButtonBox::accepted, this, &ImportDialog::import);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(m_table, 1);
    layout->addWidget(allClashesRow);
    layout->addWidget(buttons);
}

QComboBox* ImportDialog::makeResolutionChoice() {
    auto* choice = new QComboBox(this);
    choice->addItem(tr("Skip"), int(ImportPlan::Resolution::skip));
    choice->addItem(tr("Keep Both"), int(ImportPlan::Resolution::keepBoth));
    choice->addItem(tr("Replace"), int(ImportPlan::Resolution::replace));
    return choice;
}

QComboBox* ImportDialog::resolutionChoice(int row) const {
    return qobject_cast<QComboBox*>(m_table->cellWidget(row, clashColumn));
}

QString ImportDialog::categoryName(const QUuid& id) const {
    // Categories of the file are matched by name; others only exist in the library already.
    const QString planned = m_plan.categoryName(id);
    if (!planned.isEmpty())
        return planned;
    return m_store.category(id).value_or(SnippetStore::defaultCategory()).name;
}

void ImportDialog::import() {
    const std::optional<DataError> error = m_store.importSnippets(m_plan);
    accept();
    if (!error)
        return;
    auto* alert = new QMessageBox(QMessageBox::Warning, tr("Import Failed"), error->description(),
                                  QMessageBox::Ok, parentWidget());
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(Qt::WindowModal);
    alert->open();
}
