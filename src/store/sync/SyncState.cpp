#include "SyncState.h"

#include "AtomicFile.h"
#include "SyncFile.h"
#include "Timestamp.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
const QLatin1String kFolder("folder"), kHandled("handled"), kLibrary("library");
} // namespace

SyncState::SyncState(QString path) : m_path(path.isEmpty() ? standardPath() : std::move(path)) {}

QString SyncState::standardPath() {
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty() || !QDir::isAbsolutePath(state))
        state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/Typolet/sync.json");
}

bool SyncState::load(const QString& wantedFolder) {
    clear();
    folder = wantedFolder;
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    if (root.value(kFolder).toString() != wantedFolder)
        return false;
    QString error;
    auto contents = SyncFile::fromJson(root.value(kLibrary).toObject(), &error);
    if (!contents)
        return false;
    library = std::move(contents->library);
    for (const QJsonValue& key : root.value(kHandled).toArray())
        handled.insert(key.toString());
    return true;
}

std::optional<QString> SyncState::save() const {
    // Collisions reported longer ago than deletion marks are kept cannot come back.
    const double oldest = Timestamp::now() - SyncMerge::deletionDays * 86400.0;
    QJsonArray handledKeys;
    for (const QString& key : handled) {
        if (key.section(u' ', 1, 1).toDouble() >= oldest)
            handledKeys.append(key);
    }
    const QJsonObject root{{kFolder, folder},
                           {kHandled, handledKeys},
                           {kLibrary, SyncFile::toJson({}, {}, library)}};
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    return AtomicFile::write(m_path, QJsonDocument(root).toJson(QJsonDocument::Compact));
}

void SyncState::clear() {
    folder.clear();
    library = {};
    handled.clear();
}
