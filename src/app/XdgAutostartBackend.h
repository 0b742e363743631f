#pragma once

#include "AutostartBackend.h"

#include <QString>

// Start at login through the XDG autostart convention: every desktop session that follows it
// (GNOME, KDE, Xfce, LXQt, ...) starts the programs whose desktop entries sit in
// $XDG_CONFIG_HOME/autostart. Registering writes typolet.desktop there atomically, so a crash
// half-way never leaves a truncated entry that the session would choke on; unregistering
// removes it.
class XdgAutostartBackend : public AutostartBackend {
public:
    // `autostartFolder` empty: $XDG_CONFIG_HOME/autostart (~/.config/autostart when unset).
    // `executable` empty: the running program's own path.
    explicit XdgAutostartBackend(QString autostartFolder = {}, QString executable = {});

    std::optional<QString> registerItem() override;
    std::optional<QString> unregisterItem() override;
    bool isRegistered() const override;

    QString entryPath() const;
    QString executable() const { return m_executable; }

    // The desktop entry that starts `executable`.
    static QByteArray entryContent(const QString& executable);

    // `path` as one argument of a desktop entry's Exec key, with the entry's own string
    // escaping applied on top (a path may hold spaces, quotes, backslashes or percent signs).
    static QString execArgument(const QString& path);

    static constexpr const char* entryFileName = "typolet.desktop";

private:
    QString m_folder;
    QString m_executable;
};
