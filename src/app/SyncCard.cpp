#include "SyncCard.h"

#include "Preferences.h"
#include "SectionHeader.h"
#include "SyncFolder.h"
#include "ToneLabel.h"
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
// Texts under a header line up with the header's title.
constexpr int textIndent = SectionHeader::iconSize + SectionHeader::spacing;

ToneLabel* smallText(const QString& text, QWidget* parent) {
    auto* label = new ToneLabel(text, ToneLabel::Tone::Tertiary, parent);
    label->setFont(UiTheme::system(12));
    label->setWordWrap(true);
    label->setContentsMargins(textIndent, 0, 0, 0);
    return label;
}
} // namespace

SyncCard::SyncCard(SyncFolder& sync, Preferences& preferences, QWidget* parent)
    : PreferenceCard(parent), m_sync(sync), m_preferences(preferences) {
    QVBoxLayout* content = contentLayout();
    content->addWidget(
        new SectionHeader(QStringLiteral("arrow.triangle.2.circlepath"), tr("Sync"), {}, this));
    content->addWidget(smallText(
        tr("The same snippets on every computer, through a folder that Syncthing, Nextcloud, "
           "Dropbox or git already copies. Only the library goes there; preferences, excluded "
           "applications and the pause stay on this computer."),
        this));

    auto* row = new QHBoxLayout();
    row->setContentsMargins(textIndent, 0, 0, 0);
    auto* title = new QLabel(tr("Sync through a folder"), this);
    title->setFont(UiTheme::system(14, QFont::Medium));
    row->addWidget(title, 1);
    m_choose = new QPushButton(tr("Choose Folder\u2026"), this);
    m_choose->setAccessibleName(title->text());
    title->setBuddy(m_choose);
    row->addWidget(m_choose);
    m_stop = new QPushButton(tr("Stop Syncing"), this);
    row->addWidget(m_stop);
    content->addLayout(row);

    m_folder = new QLabel(this);
    m_folder->setFont(UiTheme::system(12));
    m_folder->setWordWrap(true);
    m_folder->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_folder->setContentsMargins(textIndent, 0, 0, 0);
    content->addWidget(m_folder);

    m_computers = new QListWidget(this);
    m_computers->setAccessibleName(tr("Computers in the folder"));
    m_computers->setMaximumHeight(72);
    auto* listRow = new QHBoxLayout();
    listRow->setContentsMargins(textIndent, 0, 0, 0);
    listRow->addWidget(m_computers);
    content->addLayout(listRow);

    m_status = smallText({}, this);
    m_status->setObjectName(QStringLiteral("syncStatus"));
    content->addWidget(m_status);
    m_problems = smallText({}, this);
    m_problems->setObjectName(QStringLiteral("syncProblems"));
    content->addWidget(m_problems);

    connect(m_choose, &QPushButton::clicked, this, [this] {
        const QString start = m_sync.isActive()
                                  ? m_sync.folder()
                                  : QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
        const QString folder =
            QFileDialog::getExistingDirectory(window(), tr("Choose the Folder to Sync Through"), start);
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
    connect(&m_sync, &SyncFolder::writeFailed, this, [this](const QString& message) {
        m_status->setText(message);
    });
    showState();
    showProblems();
}

void SyncCard::chooseFolder(const QString& folder) {
    if (const auto error = m_sync.start(folder)) {
        m_status->setText(*error);
        showState();
        return;
    }
    m_preferences.setSyncFolder(m_sync.folder());
    const int added = m_sync.addedOnStart();
    m_status->setText(added > 0 ? tr("Added %n snippet(s) from the other computers in this folder.",
                                     nullptr, added)
                                : tr("Nothing to add from this folder: no other computer's "
                                     "snippets are new here."));
    showState();
}

void SyncCard::stopSyncing() {
    m_sync.stop();
    m_preferences.setSyncFolder({});
    m_collisions.clear();
    m_status->setText(tr("Not syncing any more; the library stays on this computer."));
    showState();
    showProblems();
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
        const QString when = computer.lastChange.isValid()
                                 ? locale.toString(computer.lastChange.toLocalTime(),
                                                   QLocale::ShortFormat)
                                 : tr("no change yet");
        const QString name = computer.thisComputer ? tr("%1 (this computer)").arg(computer.name)
                                                   : computer.name;
        m_computers->addItem(tr("%1: %n snippet(s), last change %2", nullptr, computer.snippets)
                                 .arg(name, when));
    }
}

void SyncCard::showProblems() {
    QStringList lines;
    const QMap<QString, QString> unreadable = m_sync.unreadableFiles();
    for (auto it = unreadable.cbegin(); it != unreadable.cend(); ++it)
        lines.append(tr("Cannot read \u201C%1\u201D (%2); it is left as it is.").arg(it.key(), it.value()));
    if (!m_collisions.isEmpty())
        lines.append(m_collisions);
    m_problems->setText(lines.join(u'\n'));
    m_problems->setVisible(!lines.isEmpty());
}
