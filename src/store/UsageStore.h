#pragma once

#include "SnippetUsage.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUuid>
#include <optional>

// How often each snippet went out (typed as a command or inserted from the insert window) and
// when it last did, for ranking the insert window's list and for the editor. Kept on this
// computer only, in a file of its own ($XDG_STATE_HOME/Typolet/usage.json): never in the
// library file, never in the synced folder, and never touching a snippet.
//
// An unreadable file is reported once and counting starts afresh; it is replaced at the next
// save. Counts are saved shortly after they change (atomically) and when the store goes.
class UsageStore : public QObject {
    Q_OBJECT
public:
    // `path` empty: standardPath(). Reads the file at once.
    explicit UsageStore(QString path = {}, QObject* parent = nullptr);
    ~UsageStore() override;

    // $XDG_STATE_HOME/Typolet/usage.json, or ~/.local/state/Typolet/usage.json.
    static QString standardPath();
    QString path() const { return m_path; }

    const QHash<QUuid, SnippetUsage>& usage() const { return m_usage; }
    SnippetUsage usageOf(const QUuid& id) const { return m_usage.value(id); }

    // Counts one use of the snippet `id` at `atMs` (milliseconds since the Unix epoch), unless
    // counting is off.
    void recordUse(const QUuid& id, qint64 atMs);
    // Off: nothing more is counted; what was counted stays until clear().
    void setCounting(bool on) { m_counting = on; }
    bool isCounting() const { return m_counting; }
    // Forgets every count, on disk too.
    void clear();

    // Writes pending counts now; returns why it could not.
    std::optional<QString> save();
    // Why the file could not be read when the store was made; empty when it could (or was
    // not there yet).
    QString loadError() const { return m_loadError; }

    // Milliseconds between a count and its save: a burst of expansions writes once.
    static constexpr int saveDelayMs = 1000;

signals:
    void usageChanged();

private:
    void load();

    QString m_path;
    QHash<QUuid, SnippetUsage> m_usage;
    QString m_loadError;
    bool m_counting = true;
    QTimer m_saveTimer;
};
