#pragma once

#include <QObject>
#include <QString>
#include <memory>

class QSettings;

// The two start-at-login flags, kept in the same settings file as the snippets
// ($XDG_CONFIG_HOME/Typolet/Typolet.conf):
//  - startAtLogin: what the Preferences switch shows; absent reads as false;
//  - hasLaunchedBefore: set once the first-appearance default has been applied.
// Every write is flushed to disk at once.
class AutostartPreferences : public QObject {
    Q_OBJECT
public:
    // Flags over the given settings file (tests use their own); an empty path means the user's
    // standard Typolet settings.
    explicit AutostartPreferences(const QString& settingsFile = {}, QObject* parent = nullptr);
    ~AutostartPreferences() override;

    bool startAtLogin() const;
    // Returns false when the value could not be written to disk (the value in memory still
    // changes, as the switch already shows it).
    bool setStartAtLogin(bool enabled);

    bool hasLaunchedBefore() const;
    bool setHasLaunchedBefore(bool launched);

    QString settingsPath() const;

    static constexpr const char* startAtLoginKey = "startAtLogin";
    static constexpr const char* hasLaunchedBeforeKey = "hasLaunchedBefore";

signals:
    void startAtLoginChanged(bool enabled);

private:
    bool write(const char* key, bool value);

    std::unique_ptr<QSettings> m_settings;
};
