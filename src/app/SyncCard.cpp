#include "SyncCard.h"

#include "Preferences.h"
#include "SyncFolder.h"
#include "UiTheme.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace {
QLabel* smallText(const QString& text, QWidget* parent) {
    return UiTheme::smallLabel(text, parent);
}
} // namespace

SyncCard::SyncCard(SyncFolder& sync, Preferences& preferences, QWidget* parent)
    : QGroupBox(tr("Sync"), parent), m_sync(sync), m_preferences(preferences) {
    auto* content = new QVBoxLayout(this);
    content->addWidget(smallText(
        tr("The same snippets on every computer, through a folder that Syncthing, Nextcloud, "
           "Dropbox or git already copies. Only the library goes there; preferences, excluded "
           "applications and the pause stay on this computer."),
        this));

    auto* row = new QHBoxLayout();
    auto* title = new QLabel(tr("Sync through a folder"), this);
    row->addWidget(title, 1);
    m_choose = new QPushButton(tr("Choose Folder\u2026"), this);
    m_choose->setAccessibleName(title->text());
    title->setBuddy(m_choose);
    row->addWidget(m_choose);
    content->addLayout(row);

    auto* folderRow = new QHBoxLayout();
    m_folder = new QLabel(this);
    m_folder->setFont(UiTheme::smallFont());
    m_folder->setWordWrap(true);
    m_folder->setTextInteractionFlags(Qt::TextSelectableByMouse);
    folderRow->addWidget(m_folder, 1);
    m_stop = new QPushButton(tr("Stop Syncing"), this);
    folderRow->addWidget(m_stop, 0, Qt::AlignTop);
    content->addLayout(folderRow);

    m_computers = new QListWidget(this);
    m_computers->setAccessibleName(tr("Computers in the folder"));
    m_computers->setMaximumHeight(72);
    m_computers->setTextElideMode(Qt::ElideMiddle);
    m_computers->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* listRow = new QHBoxLayout();
    listRow->addWidget(m_computers);
    content->addLayout(listRow);

    m_status = smallText({}, this);
    m_status->setObjectName(QStringLiteral("syncStatus"));
    m_status->setVisible(false);
    content->addWidget(m_status);
    m_problems = smallText({}, this);
    m_problems->setObjectName(QStringLiteral("syncProblems"));
    content->addWidget(m_problems);

    connect(m_choose, &QPushButton::clicked, this, [this] {
        const QString start = m_sync.isActive()
                                  ? m_sync.folder()
                                  : QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
        const QString folder = QFileDialog::getExistingDirectory(
            window(), tr("Choose the Folder to Sync Through"), start);
        if (!folder.isEmpty())
            chooseFolder(folder);
    });
    connect(m_stop, &QPushButton::clicked, this, &SyncCard::stopSyncing);
    connect(&m_sync, &SyncFolder::computersChanged, this, &SyncCard::showState);
    connect(&m_sync, &SyncFolder::unreadableFilesChanged, this, &SyncCard::showProblems);
    connect(&m_sync, &SyncFolder::collisionsKept, this, [this](const QString& message) {
        m_collisions = message;
        showProblems();
    });
    connect(&m_sync, &SyncFolder::writeFailed, this, &SyncCard::showStatus);
    showState();
    showProblems();
}

void SyncCard::chooseFolder(const QString& folder) {
    if (const auto error = m_sync.start(folder)) {
        showStatus(*error);
        showState();
        return;
    }
    m_preferences.setSyncFolder(m_sync.folder());
    const int added = m_sync.addedOnStart();
    showStatus(added > 0 ? tr("Added %n snippet(s) from the other computers in this folder.",
                              nullptr, added)
                         : tr("Nothing to add from this folder: no other computer's "
                              "snippets are new here."));
    showState();
}

void SyncCard::stopSyncing() {
    m_sync.stop();
    m_preferences.setSyncFolder({});
    m_collisions.clear();
    showStatus(tr("Not syncing any more; the library stays on this computer."));
    showState();
    showProblems();
}

void SyncCard::showStatus(const QString& text) {
    m_status->setText(text);
    m_status->setVisible(!text.isEmpty());
}

void SyncCard::showState() {
    const bool active = m_sync.isActive();
    m_stop->setVisible(active);
    m_folder->setText(active ? tr("Folder in use: %1").arg(m_sync.libraryFolder())
                             : tr("Not syncing: the library is on this computer only."));
    m_computers->setVisible(active);
    m_computers->clear();
    const QLocale locale;
    for (const SyncFolder::Computer& computer : m_sync.computers()) {
        const QString when =
            computer.lastChange.isValid()
                ? locale.toString(computer.lastChange.toLocalTime(), QLocale::NarrowFormat)
                : tr("no change yet");
        const QString name =
            computer.thisComputer ? tr("%1 (this computer)").arg(computer.name) : computer.name;
        auto* item = new QListWidgetItem(
            tr("%1: %n snippet(s), changed %2", nullptr, computer.snippets).arg(name, when),
            m_computers);
        item->setToolTip(computer.fileName);
    }
}

void SyncCard::showProblems() {
    QStringList lines;
    const QMap<QString, QString> unreadable = m_sync.unreadableFiles();
    for (auto it = unreadable.cbegin(); it != unreadable.cend(); ++it)
        lines.append(
            tr("Cannot read \u201C%1\u201D (%2); it is left as it is.").arg(it.key(), it.value()));
    if (!m_collisions.isEmpty())
        lines.append(m_collisions);
    m_problems->setText(lines.join(u'\n'));
    m_problems->setVisible(!lines.isEmpty());
}
