#include "RestoreDialog.h"

#include "StoreMessages.h"
#include "LibraryContent.h"
#include "SnippetStore.h"

#include <QDialogButtonBox>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QSet>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
// The snippets a version holds, those that do not read included; empty when it reads not at all.
QString snippetCount(const QString& versionPath) {
    const auto version = LibraryContent::read(versionPath);
    return version ? QLocale().toString(version->snippets->size() + version->unreadableSnippets)
                   : QString();
}

QString someCommands(const QStringList& commands) {
    constexpr int shown = 5;
    if (commands.size() <= shown)
        return QLocale().createSeparatedList(commands);
    return RestoreDialog::tr("%1 and %n more", nullptr, int(commands.size() - shown))
        .arg(commands.mid(0, shown).join(QStringLiteral(", ")));
}
} // namespace

RestoreDialog::RestoreDialog(SnippetStore& store, QWidget* parent)
    : QDialog(parent), m_store(store), m_versions(store.file().history().versions()) {
    setWindowTitle(tr("Restore From Backup"));
    setObjectName(QStringLiteral("restoreDialog"));
    auto* layout = new QVBoxLayout(this);
    auto* intro = new QLabel(
        tr("Typolet keeps the last %1 versions of your library in %2. Restoring one replaces "
           "your snippets and categories with it; the library as it is now is kept as a version "
           "first.")
            .arg(LibraryHistory::kept)
            .arg(store.file().history().folder()),
        this);
    intro->setWordWrap(true);
    layout->addWidget(intro);

    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("versionList"));
    m_list->setAccessibleName(tr("Versions"));
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels({tr("Date"), tr("Kept"), tr("Snippets")});
    const QLocale locale;
    for (const LibraryHistory::Version& version : std::as_const(m_versions)) {
        auto* item = new QTreeWidgetItem(
            m_list, {locale.toString(version.when, QLocale::ShortFormat),
                     LibraryHistory::reasonText(version.reason),
                     snippetCount(version.path)});
        item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
    }
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    layout->addWidget(m_list, 1);

    m_changes = new QLabel(this);
    m_changes->setObjectName(QStringLiteral("restoreChanges"));
    m_changes->setWordWrap(true);
    m_changes->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_changes);

    m_buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QPushButton* restoreButton = m_buttons->addButton(tr("&Restore"), QDialogButtonBox::AcceptRole);
    restoreButton->setEnabled(false);
    layout->addWidget(m_buttons);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &RestoreDialog::restore);
    connect(m_list, &QTreeWidget::currentItemChanged, this, &RestoreDialog::showChanges);
    connect(m_list, &QTreeWidget::itemActivated, this, &RestoreDialog::restore);

    if (m_versions.isEmpty())
        m_changes->setText(tr("No earlier version has been kept yet. Typolet keeps one before "
                              "an import, a restore or a change from another program, and one "
                              "every ten minutes while you edit."));
    else
        m_list->setCurrentItem(m_list->topLevelItem(0));
    resize(560, 420);
}

QString RestoreDialog::changesFor(const QString& versionPath) const {
    const auto version = LibraryContent::read(versionPath);
    if (!version)
        return tr("This version holds no snippets Typolet can read.");
    const auto& snippets = version->snippets;
    QHash<QUuid, const Snippet*> now;
    for (const Snippet& snippet : m_store.snippets())
        now.insert(snippet.id, &snippet);
    QStringList added, changed, removed;
    QSet<QUuid> inVersion;
    for (const Snippet& old : *snippets) {
        inVersion.insert(old.id);
        const Snippet* current = now.value(old.id);
        if (!current)
            added.append(old.command);
        else if (current->command != old.command || current->content != old.content ||
                 current->categoryId != old.categoryId)
            changed.append(old.command);
    }
    for (const Snippet& snippet : m_store.snippets()) {
        if (!inVersion.contains(snippet.id))
            removed.append(snippet.command);
    }
    QStringList lines;
    if (!added.isEmpty())
        lines.append(tr("Brings back %n snippet(s): %1.", nullptr, int(added.size()))
                         .arg(someCommands(added)));
    if (!removed.isEmpty())
        lines.append(tr("Removes %n snippet(s) added since: %1.", nullptr, int(removed.size()))
                         .arg(someCommands(removed)));
    if (!changed.isEmpty())
        lines.append(tr("Puts back the earlier text of %n snippet(s): %1.", nullptr,
                        int(changed.size()))
                         .arg(someCommands(changed)));
    if (lines.isEmpty())
        lines.append(tr("The snippets are the same as now."));
    if (version->unreadableSnippets > 0)
        lines.append(tr("%n record(s) of this version cannot be read and are left out.", nullptr,
                        version->unreadableSnippets));
    return lines.join(u'\n');
}

void RestoreDialog::showChanges() {
    const int row = m_list->indexOfTopLevelItem(m_list->currentItem());
    const bool valid = row >= 0 && row < m_versions.size();
    for (QAbstractButton* button : m_buttons->buttons()) {
        if (m_buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
            button->setEnabled(valid);
    }
    m_changes->setText(valid ? changesFor(m_versions.at(row).path) : QString());
}

void RestoreDialog::restore() {
    const int row = m_list->indexOfTopLevelItem(m_list->currentItem());
    if (row < 0 || row >= m_versions.size())
        return;
    if (const auto error = m_store.restoreVersion(m_versions.at(row).path)) {
        QMessageBox::warning(this, tr("Not Restored"), StoreMessages::text(*error));
        if (!error->isUnsaved())
            return;
    }
    accept();
}
