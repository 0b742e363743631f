#include "UsageStore.h"

#include "AtomicFile.h"
#include "Logging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <climits>

namespace {
const QLatin1String kVersion("version"), kSnippets("snippets"), kCount("count"), kLast("last");
constexpr int formatVersion = 1;
} // namespace

UsageStore::UsageStore(QString path, QObject* parent)
    : QObject(parent), m_path(path.isEmpty() ? standardPath() : std::move(path)) {
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(saveDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, [this] {
        if (const auto error = save())
            qCWarning(lcStore).noquote() << QStringLiteral("Could not save the usage counts: %1").arg(*error);
    });
    load();
}

UsageStore::~UsageStore() {
    if (m_saveTimer.isActive())
        save();
}

QString UsageStore::standardPath() {
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty() || !QDir::isAbsolutePath(state))
        state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/Typolet/usage.json");
}

void UsageStore::load() {
    QFile file(m_path);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        m_loadError = file.errorString();
    } else {
        QJsonParseError parseError;
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
        const QJsonObject root = document.object();
        if (parseError.error != QJsonParseError::NoError)
            m_loadError = parseError.errorString();
        else if (!document.isObject() || root.value(kVersion).toInt() != formatVersion ||
                 !root.value(kSnippets).isObject())
            m_loadError = QStringLiteral("not a usage file of this version");
        const QJsonObject snippets = root.value(kSnippets).toObject();
        for (auto it = snippets.begin(); m_loadError.isEmpty() && it != snippets.end(); ++it) {
            const QUuid id = QUuid::fromString(it.key());
            const QJsonObject record = it.value().toObject();
            const double count = record.value(kCount).toDouble(-1);
            const double last = record.value(kLast).toDouble(-1);
            // Whole, non-negative numbers in range only: anything else is a damaged file.
            if (id.isNull() || count < 0 || count > INT_MAX || count != qint64(count) ||
                last < 0 || last > 9e15)
                m_loadError = QStringLiteral("a damaged record");
            else
                m_usage.insert(id, {int(count), qint64(last)});
        }
    }
    if (!m_loadError.isEmpty()) {
        m_usage.clear();
        qCWarning(lcStore).noquote()
            << QStringLiteral("The usage counts in %1 could not be read (%2); counting starts afresh")
                   .arg(m_path, m_loadError);
    }
}

void UsageStore::recordUse(const QUuid& id, qint64 atMs) {
    if (!m_counting || id.isNull())
        return;
    SnippetUsage& usage = m_usage[id];
    usage.count = usage.count == INT_MAX ? INT_MAX : usage.count + 1;
    usage.lastUsedMs = std::max(usage.lastUsedMs, atMs);
    m_saveTimer.start();
    emit usageChanged();
}

void UsageStore::clear() {
    m_usage.clear();
    m_saveTimer.stop();
    if (const auto error = save())
        qCWarning(lcStore).noquote() << QStringLiteral("Could not clear the usage counts: %1").arg(*error);
    emit usageChanged();
}

std::optional<QString> UsageStore::save() {
    m_saveTimer.stop();
    QJsonObject snippets;
    for (auto it = m_usage.cbegin(); it != m_usage.cend(); ++it)
        snippets.insert(it.key().toString(QUuid::WithoutBraces),
                        QJsonObject{{kCount, it->count}, {kLast, double(it->lastUsedMs)}});
    const QJsonObject root{{kVersion, formatVersion}, {kSnippets, snippets}};
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    return AtomicFile::write(m_path, QJsonDocument(root).toJson(QJsonDocument::Compact));
}
