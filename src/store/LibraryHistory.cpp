#include "LibraryHistory.h"

#include "AtomicFile.h"
#include "Logging.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace {
constexpr QFileDevice::Permissions ownerFolder = AtomicFile::ownerOnly | QFileDevice::ExeOwner;

const char* const reasonNames[] = {"edit", "import", "outside-change", "restore", "salvage",
                                   "sync-collision"};
const QString stampFormat = QStringLiteral("yyyyMMdd-HHmmss-zzz");

std::optional<LibraryHistory::Version> versionOf(const QFileInfo& info) {
    // Typolet-<stamp>-<reason>.conf
    const QString name = info.completeBaseName();
    if (!name.startsWith(QLatin1String("Typolet-")))
        return std::nullopt;
    const QString rest = name.mid(8);
    const QDateTime when = QDateTime::fromString(rest.left(stampFormat.size()), stampFormat);
    if (!when.isValid())
        return std::nullopt;
    const QString reason = rest.mid(stampFormat.size() + 1);
    for (int i = 0; i < int(std::size(reasonNames)); ++i) {
        if (reason == QLatin1String(reasonNames[i]))
            return LibraryHistory::Version{info.filePath(), when, LibraryHistory::Reason(i)};
    }
    return std::nullopt;
}
} // namespace

LibraryHistory::LibraryHistory(QString folder) : m_folder(std::move(folder)) {}

QString LibraryHistory::standardFolder() {
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty() || !QDir::isAbsolutePath(state))
        state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/Typolet/backups");
}

QString LibraryHistory::reasonText(Reason reason) {
    switch (reason) {
    case Reason::Edit: return QCoreApplication::translate("LibraryHistory", "Before an edit");
    case Reason::Import: return QCoreApplication::translate("LibraryHistory", "Before an import");
    case Reason::OutsideChange:
        return QCoreApplication::translate("LibraryHistory", "Changed by another program");
    case Reason::Restore: return QCoreApplication::translate("LibraryHistory", "Before a restore");
    case Reason::Salvage:
        return QCoreApplication::translate("LibraryHistory", "Damaged file, as found");
    case Reason::SyncCollision:
        return QCoreApplication::translate("LibraryHistory", "Lost to a change on another computer");
    }
    return {};
}

QList<LibraryHistory::Version> LibraryHistory::versions() const {
    QList<Version> found;
    const QFileInfoList files = QDir(m_folder).entryInfoList(
        {QStringLiteral("Typolet-*.conf")}, QDir::Files, QDir::Name | QDir::Reversed);
    for (const QFileInfo& info : files) {
        if (const auto version = versionOf(info))
            found.append(*version);
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const Version& a, const Version& b) { return a.when > b.when; });
    return found;
}

bool LibraryHistory::due(Reason reason) const {
    if (reason != Reason::Edit)
        return true;
    const QDateTime now = QDateTime::currentDateTime();
    for (const Version& version : versions()) {
        if (version.reason == Reason::Edit)
            return version.when > now || version.when.secsTo(now) >= editIntervalSeconds;
    }
    return true;
}

std::optional<QString> LibraryHistory::keep(const QByteArray& fileText, Reason reason,
                                            QString* keptPath) {
    const QList<Version> existing = versions();
    const QDateTime now = QDateTime::currentDateTime();
    if (!QDir().mkpath(m_folder))
        return QCoreApplication::translate("LibraryHistory", "the folder %1 cannot be made")
            .arg(m_folder);
    QFile::setPermissions(m_folder, ownerFolder);
    // A later stamp than every version kept, so the order of versions is the order of saves.
    QDateTime when = now;
    if (!existing.isEmpty() && when <= existing.first().when)
        when = existing.first().when.addMSecs(1);
    const QString path = m_folder + QStringLiteral("/Typolet-") + when.toString(stampFormat) +
                         u'-' + QLatin1String(reasonNames[int(reason)]) + QStringLiteral(".conf");
    if (auto error = AtomicFile::write(path, fileText))
        return error;
    // The oldest beyond the number kept go.
    QList<Version> all = versions();
    for (qsizetype i = kept; i < all.size(); ++i)
        QFile::remove(all.at(i).path);
    qCDebug(lcStore).noquote() << QStringLiteral("Kept a version of the library in %1").arg(path);
    if (keptPath)
        *keptPath = path;
    return std::nullopt;
}
