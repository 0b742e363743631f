#include "SyncFolder.h"

#include "AtomicFile.h"
#include "IniFormat.h"
#include "LibraryKeys.h"
#include "Logging.h"
#include "RecordCodec.h"
#include "SnippetStore.h"
#include "SyncFile.h"
#include "Timestamp.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSysInfo>
#include <sys/stat.h>

namespace {
template <class Item>
bool sameLists(const QList<Item>& a, const QList<Item>& b) {
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (!SyncMerge::sameContent(a[i], b[i]))
            return false;
    }
    return true;
}

// Records of `lost` in place of those of `list` with their ids.
template <class Item>
void putBack(QList<Item>& list, const QList<SyncMerge::Record>& lost, Item SyncMerge::Record::*field) {
    for (const SyncMerge::Record& record : lost) {
        const Item& item = record.*field;
        const auto found = std::find_if(list.begin(), list.end(),
                                        [&](const Item& other) { return other.id == item.id; });
        if (found != list.end())
            *found = item;
        else
            list.append(item);
    }
}
} // namespace

SyncFolder::SyncFolder(SnippetStore& store, std::function<QString()> computer, QString statePath,
                       QObject* parent)
    : QObject(parent), m_store(store), m_computerId(std::move(computer)),
      m_hostName(QSysInfo::machineHostName()), m_state(std::move(statePath)) {
    m_readSoon.setSingleShot(true);
    m_readSoon.setInterval(readDelayMs);
    m_writeSoon.setSingleShot(true);
    m_writeSoon.setInterval(writeDelayMs);
    m_poll.setInterval(pollIntervalMs);
    connect(&m_readSoon, &QTimer::timeout, this, &SyncFolder::readFolder);
    connect(&m_poll, &QTimer::timeout, this, &SyncFolder::readFolder);
    connect(&m_writeSoon, &QTimer::timeout, this, &SyncFolder::publish);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_readSoon,
            qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_readSoon, qOverload<>(&QTimer::start));
    const auto changed = [this] {
        if (!m_applying)
            m_localChanges = true;
        if (isActive() && !m_applying)
            m_writeSoon.start();
    };
    connect(&m_store, &SnippetStore::snippetsChanged, this, changed);
    connect(&m_store, &SnippetStore::categoriesChanged, this, changed);
}

SyncFolder::~SyncFolder() {
    // A change still waiting goes out before Typolet ends.
    if (m_writeSoon.isActive())
        publish();
}

QString SyncFolder::libraryFolder() const {
    return m_folder.isEmpty() ? QString() : m_folder + QStringLiteral("/Typolet");
}

QString SyncFolder::ownFilePath() const {
    return m_folder.isEmpty() ? QString()
                              : libraryFolder() + u'/' + SyncFile::fileName(m_hostName, m_computer);
}

QString SyncFolder::conflictCopiesFolder() const {
    return m_store.file().history().folder() + QStringLiteral("/sync-conflicts");
}

std::optional<QString> SyncFolder::start(const QString& folder) {
    stop();
    if (m_computer.isEmpty())
        m_computer = m_computerId();
    const QString absolute = QFileInfo(folder).absoluteFilePath();
    const QString dir = absolute + QStringLiteral("/Typolet");
    if (folder.isEmpty() || !QDir().mkpath(dir))
        return tr("The folder %1 cannot be made.").arg(dir);
    if (!QFileInfo(dir).isWritable())
        return tr("Typolet cannot write in %1.").arg(dir);
    if (!m_store.loadError().isEmpty())
        return tr("The library cannot be read, so it is not synced: %1").arg(m_store.loadError());
    m_folder = absolute;
    // Without a state of this folder, the library here is as old as its records: whatever
    // another computer changed since wins over it.
    // Records of a library file that could not be read whole are not taken for deletions.
    const bool known = m_state.load(m_folder);
    if (!known || storeIsWhole())
        SyncMerge::stampLocalChanges(m_state.library, m_store.categories(), m_store.snippets(),
                                     m_computer, Timestamp::now(), !known);
    QSet<QUuid> before;
    for (const Snippet& snippet : m_store.snippets())
        before.insert(snippet.id);
    m_seen.clear();
    m_computers.clear();
    m_unreadable.clear();
    m_written.clear();
    m_savedHandled = -1;
    m_localChanges = false;
    m_writePending = false;
    // The first look at a folder may replace versions of this library with other computers'
    // (whichever changed later): the library as it was goes into the history first.
    m_keepBeforeApplying = !known;
    readFolder();
    m_keepBeforeApplying = false;
    writeOwnFile();
    m_addedOnStart = 0;
    for (const Snippet& snippet : m_store.snippets())
        m_addedOnStart += before.contains(snippet.id) ? 0 : 1;
    m_watcher.addPath(dir);
    m_poll.start();
    qCInfo(lcStore).noquote() << QStringLiteral("Syncing through %1").arg(dir);
    emit computersChanged();
    return std::nullopt;
}

void SyncFolder::stop() {
    if (!isActive())
        return;
    if (m_writeSoon.isActive())
        publish();
    m_writeSoon.stop();
    m_readSoon.stop();
    m_poll.stop();
    if (!m_watcher.files().isEmpty())
        m_watcher.removePaths(m_watcher.files());
    if (!m_watcher.directories().isEmpty())
        m_watcher.removePaths(m_watcher.directories());
    m_folder.clear();
    m_state.clear();
    m_computers.clear();
    m_unreadable.clear();
    m_seen.clear();
    emit computersChanged();
    emit unreadableFilesChanged();
}

SyncFolder::Signature SyncFolder::signatureOf(const QString& path) {
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return {};
    return {qint64(info.st_size), qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec,
            quint64(info.st_ino)};
}

bool SyncFolder::storeIsWhole() const {
    // A library that could not be read whole would go out as deletions of what is missing.
    return m_store.loadError().isEmpty() && m_store.unreadableRecords() == 0;
}

bool SyncFolder::stampLocalChanges() {
    m_writeSoon.stop();
    // The store announces every change, so an unchanged store needs no comparison.
    if (!isActive() || !m_localChanges || !storeIsWhole())
        return false;
    m_localChanges = false;
    return SyncMerge::stampLocalChanges(m_state.library, m_store.categories(), m_store.snippets(),
                                        m_computer, Timestamp::now());
}

void SyncFolder::publish() {
    if (stampLocalChanges())
        writeOwnFile();
}

void SyncFolder::readFolder() {
    if (!isActive())
        return;
    // A change of the store not written yet is stamped first, or the merge would take the
    // store's new version for one the folder does not know and put the old one back.
    const bool stamped = stampLocalChanges();
    const QDir dir(libraryFolder());
    const QString ownName = SyncFile::fileName(m_hostName, m_computer);
    SyncMerge::Outcome total;
    bool listChanged = false, unreadableChanged = false;
    QStringList conflictCopies;
    QSet<QString> present;
    const QStringList names = dir.entryList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QString& name : names) {
        if (name == ownName || SyncFile::isTemporary(name) || !name.endsWith(QLatin1String(".json")))
            continue;
        present.insert(name);
        const QString path = dir.filePath(name);
        const Signature signature = signatureOf(path);
        const auto seen = m_seen.constFind(name);
        if (seen != m_seen.cend() && seen->settled && seen->signature == signature)
            continue;
        QFile file(path);
        QString error;
        std::optional<SyncFile::Contents> contents;
        const bool opened = file.open(QIODevice::ReadOnly);
        const QByteArray bytes = opened ? file.readAll() : QByteArray();
        const size_t hash = qHash(bytes);
        const bool settled = QDateTime::currentMSecsSinceEpoch() * 1000000 - signature.modified >
                             qint64(2) * 1000000000;
        if (seen != m_seen.cend() && seen->signature == signature && seen->hash == hash) {
            m_seen[name].settled = settled;
            continue;
        }
        m_seen.insert(name, {signature, hash, settled});
        if (!opened)
            error = file.errorString();
        else
            contents = SyncFile::decode(bytes, &error);
        if (!contents) {
            // Left exactly as it is: it may be a computer's file half-way through a copy, or a
            // newer Typolet's.
            if (m_unreadable.value(name) != error) {
                m_unreadable.insert(name, error);
                unreadableChanged = true;
            }
            qCWarning(lcStore).noquote() << QStringLiteral("Cannot read %1: %2").arg(path, error);
            continue;
        }
        unreadableChanged |= m_unreadable.remove(name) > 0;
        const SyncMerge::Outcome outcome =
            SyncMerge::merge(m_state.library, contents->library, m_computer, m_state.handled);
        total.added += outcome.added;
        total.changed += outcome.changed;
        total.deleted += outcome.deleted;
        total.lostSnippets += outcome.lostSnippets;
        total.lostCategories += outcome.lostCategories;
        if (SyncFile::isConflictCopy(name)) {
            conflictCopies.append(path);
        } else {
            m_computers.insert(name, describe(name, contents->name, contents->library,
                                              contents->computer));
            listChanged = true;
        }
    }
    // Files that went away: their computers left the folder.
    for (auto it = m_seen.begin(); it != m_seen.end();) {
        if (present.contains(it.key())) {
            ++it;
            continue;
        }
        listChanged |= m_computers.remove(it.key()) > 0;
        unreadableChanged |= m_unreadable.remove(it.key()) > 0;
        it = m_seen.erase(it);
    }

    if (total.hasLosses())
        keepLosses(total);
    if (total.changedAnything())
        applyToStore();
    for (const QString& path : std::as_const(conflictCopies))
        moveConflictCopy(path);
    // This computer's file says what it now holds, and comes back if something took it away.
    if (stamped || m_writePending || signatureOf(ownFilePath()) != m_ownSignature || !conflictCopies.isEmpty() ||
        total.changedAnything() || total.hasLosses() || listChanged)
        writeOwnFile();
    watchFiles();
    if (listChanged)
        emit computersChanged();
    if (unreadableChanged)
        emit unreadableFilesChanged();
}

void SyncFolder::applyToStore() {
    if (!storeIsWhole())
        return;
    QList<Category> categories = m_store.categories();
    QList<Snippet> snippets = m_store.snippets();
    SyncMerge::toLists(m_state.library, categories, snippets);
    if (sameLists(categories, m_store.categories()) && sameLists(snippets, m_store.snippets()))
        return;
    if (m_keepBeforeApplying) {
        m_keepBeforeApplying = false;
        if (const auto error = m_store.file().history().keep(m_store.file().text(),
                                                             LibraryHistory::Reason::Import))
            qCWarning(lcStore).noquote()
                << QStringLiteral("Could not keep the library before syncing: %1").arg(*error);
    }
    m_applying = true;
    // Not saved is not lost: the store keeps the lists and writes them with its next save.
    (void)m_store.replaceLibrary(std::move(categories), std::move(snippets));
    m_applying = false;
}

void SyncFolder::keepLosses(const SyncMerge::Outcome& outcome) {
    // The library as it is here, with the losing versions in place of the winners: restoring it
    // from the history brings them back.
    QList<Snippet> snippets = m_store.snippets();
    QList<Category> categories = m_store.categories();
    putBack(snippets, outcome.lostSnippets, &SyncMerge::Record::snippet);
    putBack(categories, outcome.lostCategories, &SyncMerge::Record::category);
    IniFormat::Values values = IniFormat::parse(m_store.file().text());
    if (const auto json = RecordCodec::encodeSnippets(snippets)) {
        values.insert(QLatin1String(LibraryKeys::snippets), IniFormat::encode(*json));
        values.insert(QLatin1String(LibraryKeys::afterWordEnd),
                      IniFormat::encode(QJsonDocument(RecordCodec::afterWordEndIds(snippets))
                                            .toJson(QJsonDocument::Compact)));
    }
    if (const auto json = RecordCodec::encodeCategories(categories))
        values.insert(QLatin1String(LibraryKeys::categories), IniFormat::encode(*json));
    QString kept;
    if (const auto error = m_store.file().history().keep(
            IniFormat::compose(values), LibraryHistory::Reason::SyncCollision, &kept))
        qCWarning(lcStore).noquote()
            << QStringLiteral("Could not keep the versions lost in a sync: %1").arg(*error);
    QStringList commands;
    for (const SyncMerge::Record& record : outcome.lostSnippets)
        commands.append(QStringLiteral("\u201C%1\u201D").arg(record.snippet.command));
    for (const SyncMerge::Record& record : outcome.lostCategories)
        commands.append(QStringLiteral("\u201C%1\u201D").arg(record.category.name));
    emit collisionsKept(
        tr("Changed here and on another computer at the same time: %1. The newer change is "
           "kept; the other is in Restore From Backup.")
            .arg(commands.join(QStringLiteral(", "))));
}

void SyncFolder::moveConflictCopy(const QString& path) {
    const QString target = conflictCopiesFolder();
    QDir().mkpath(target);
    const QString destination =
        target + u'/' + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss-")) +
        QFileInfo(path).fileName();
    // Another file system, as often: a copy, and the original goes only once the copy is whole.
    if (!QFile::rename(path, destination) &&
        !(QFile::copy(path, destination) && QFile::remove(path))) {
        qCWarning(lcStore).noquote() << QStringLiteral("Could not move %1 to %2").arg(path, destination);
        return;
    }
    m_seen.remove(QFileInfo(path).fileName());
    qCInfo(lcStore).noquote() << QStringLiteral("Merged the conflict copy %1 and moved it to %2")
                                     .arg(path, destination);
}

void SyncFolder::writeOwnFile() {
    if (!isActive())
        return;
    SyncMerge::forgetOldDeletions(m_state.library, Timestamp::now());
    const QByteArray text = SyncFile::encode(m_computer, m_hostName, m_state.library);
    const QString path = ownFilePath();
    const bool changed = text != m_written;
    if (changed || signatureOf(path) != m_ownSignature) {
        // Readable by its owner only, as the library itself; the sync engine runs as the user.
        if (const auto error = AtomicFile::write(path, text)) {
            // Tried again at the next look at the folder.
            m_writePending = true;
            emit writeFailed(tr("Could not write %1: %2").arg(path, *error));
        } else {
            m_writePending = false;
            m_written = text;
            m_ownSignature = signatureOf(path);
        }
    }
    // The state holds what the file holds, and the collisions already reported.
    if (!changed && m_state.handled.size() == m_savedHandled)
        return;
    m_savedHandled = m_state.handled.size();
    if (const auto error = m_state.save())
        qCWarning(lcStore).noquote() << QStringLiteral("Could not keep the sync state in %1: %2")
                                            .arg(m_state.path(), *error);
}

void SyncFolder::watchFiles() {
    // A file replaced by a rename is a new file to the watch; every present file is watched
    // again (the directory's own watch sees names come and go).
    QStringList paths;
    const QDir dir(libraryFolder());
    for (const QString& name : m_seen.keys())
        paths.append(dir.filePath(name));
    const QStringList watched = m_watcher.files();
    QStringList missing;
    for (const QString& path : paths) {
        if (!watched.contains(path))
            missing.append(path);
    }
    if (!missing.isEmpty())
        m_watcher.addPaths(missing);
}

SyncFolder::Computer SyncFolder::describe(const QString& fileName, const QString& name,
                                          const SyncMerge::Library& library,
                                          const QString& computer) const {
    Computer described;
    described.fileName = fileName;
    described.name = name.isEmpty() ? QFileInfo(fileName).completeBaseName() : name;
    double newest = -1;
    for (const SyncMerge::Record& record : library.snippets) {
        described.snippets += record.deleted ? 0 : 1;
        if (record.stamp.computer == computer)
            newest = std::max(newest, record.stamp.time);
    }
    for (const SyncMerge::Record& record : library.categories) {
        if (record.stamp.computer == computer)
            newest = std::max(newest, record.stamp.time);
    }
    if (newest >= 0)
        described.lastChange = Timestamp::toDateTime(newest);
    return described;
}

QList<SyncFolder::Computer> SyncFolder::computers() const {
    QList<Computer> list;
    if (!isActive())
        return list;
    Computer self = describe(SyncFile::fileName(m_hostName, m_computer), m_hostName,
                             m_state.library, m_computer);
    self.thisComputer = true;
    list.append(self);
    for (const Computer& other : m_computers)
        list.append(other);
    return list;
}
