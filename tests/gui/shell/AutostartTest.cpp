// Start at login: the autostart entry, the failure lines, the first-appearance default, the flags.

#include "CapturedDiagnostics.h"
#include "IsolatedTestMain.h"
#include "Autostart.h"
#include "Preferences.h"
#include "RecordingAutostartBackend.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"
#include "TestData.h"
#include "XdgAutostartBackend.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>

namespace {
// A manager over a recording backend; `calls` stays valid while the manager lives.
struct RecordedManager {
    RecordingAutostartBackend* calls = new RecordingAutostartBackend;
    Autostart manager{std::unique_ptr<AutostartBackend>(calls)};
};
} // namespace

class AutostartTest : public QObject {
    Q_OBJECT
private slots:
    void entryIsWrittenWholeAndRemovedAlone();
    void failuresPrintOneLineEach();
    void firstAppearanceTurnsItOnOnlyOnce();
    void defaultsUseTheUsersConfigFolder();
};

void AutostartTest::entryIsWrittenWholeAndRemovedAlone() {
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("deep/autostart"));
    const QString entry = folder + QStringLiteral("/typolet.desktop");
    // Quoted for the Exec key (\ " $ ` escaped, % doubled), then every backslash escaped once
    // more, as in any desktop-entry string.
    Autostart manager(std::make_unique<XdgAutostartBackend>(
        folder, QStringLiteral("/opt/a\\b \"c\" $d`e 100%/typolet")));
    const QByteArray expected =
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Typolet\n"
        "Comment=Expands your snippets as you type\n"
        "Exec=\"/opt/a\\\\\\\\b \\\\\"c\\\\\" \\\\$d\\\\`e 100%%/typolet\"\n"
        "Icon=typolet\n"
        "Terminal=false\n"
        "X-GNOME-Autostart-enabled=true\n";
    CapturedDiagnostics output;
    manager.setStartAtLogin(false); // nothing to remove yet: no failure, no folder
    QVERIFY(!QFileInfo::exists(folder));
    manager.setStartAtLogin(true);
    QCOMPARE(readAll(entry), expected);

    // An old entry is replaced through a temporary file renamed into place.
    QVERIFY(replaceFile(entry, "[Desktop Entry]\nExec=/old/typolet --stale\nHidden=true\n"));
    manager.setStartAtLogin(true);
    QCOMPARE(readAll(entry), expected);
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System),
             QStringList{QStringLiteral("typolet.desktop")});

    const QString validator =
        QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
    QVERIFY2(!validator.isEmpty(),
             "desktop-file-validate is missing (scripts/bootstrap installs it)");
    QProcess validate;
    validate.start(validator, {entry});
    QVERIFY(validate.waitForFinished(30000));
    const QByteArray complaints = validate.readAllStandardOutput();
    QVERIFY2(validate.exitCode() == 0 && complaints.isEmpty(), complaints.constData());

    const QString other = folder + QStringLiteral("/other.desktop");
    QVERIFY(replaceFile(other, "[Desktop Entry]\n"));
    manager.setStartAtLogin(false);
    QVERIFY(!QFileInfo::exists(entry));
    QVERIFY(QFileInfo::exists(other));
    QCOMPARE(output.lines, QStringList());
}

void AutostartTest::failuresPrintOneLineEach() {
    QTemporaryDir dir;
    // A plain file where the autostart folder should be: the entry cannot be written.
    const QString blocked = dir.filePath(QStringLiteral("autostart"));
    QVERIFY(replaceFile(blocked, {}));
    // A folder with content where the entry should be: it cannot be removed.
    const QString stuck = dir.filePath(QStringLiteral("other-autostart"));
    QVERIFY(QDir().mkpath(stuck + QStringLiteral("/typolet.desktop/inside")));
    const QString program = QStringLiteral("/usr/bin/typolet");
    CapturedDiagnostics output;
    Autostart(std::make_unique<XdgAutostartBackend>(blocked, program)).setStartAtLogin(true);
    Autostart(std::make_unique<XdgAutostartBackend>(stuck, program)).setStartAtLogin(false);
    QCOMPARE(output.lines.size(), 2);
    const QString enable = QStringLiteral("Failed to enable autostart entry: ");
    const QString disable = QStringLiteral("Failed to disable autostart entry: ");
    QVERIFY2(output.lines[0].startsWith(enable) && output.lines[0].size() > enable.size(),
             qPrintable(output.lines[0]));
    QVERIFY2(output.lines[1].startsWith(disable) && output.lines[1].size() > disable.size(),
             qPrintable(output.lines[1]));

    // The prefix and the backend's error text; a failed first registration leaves the preference
    // on (the Preferences view then shows what the desktop will do).
    TemporarySettings settings;
    Preferences preferences(settings.path());
    RecordedManager recorded;
    recorded.calls->registerError = QStringLiteral("folder is read-only");
    recorded.calls->unregisterError = QStringLiteral("entry is locked");
    output.lines.clear();
    recorded.manager.applyFirstLaunchDefault(preferences);
    recorded.manager.setStartAtLogin(false);
    QCOMPARE(output.lines, QStringList({enable + QStringLiteral("folder is read-only"),
                                        enable + QStringLiteral("folder is read-only"),
                                        disable + QStringLiteral("entry is locked")}));
    QVERIFY(preferences.startAtLogin());
    QVERIFY(preferences.hasLaunchedBefore());
}

void AutostartTest::firstAppearanceTurnsItOnOnlyOnce() {
    TemporarySettings settings;
    RecordedManager recorded;
    {
        Preferences preferences(settings.path());
        QVERIFY(!preferences.startAtLogin() && !preferences.hasLaunchedBefore());
        recorded.manager.applyFirstLaunchDefault(preferences);
        QCOMPARE(recorded.calls->calls, QList<bool>({true, true}));
        QCOMPARE(settings.read(QStringLiteral("startAtLogin")).toBool(), true);
        QCOMPARE(settings.read(QStringLiteral("hasLaunchedBefore")).toBool(), true);
        // The snippets are written to the same file without overwriting the flags.
        QVERIFY(!SnippetStore(settings.path()).addCategory(QStringLiteral("Work")));
    }
    // A later run reads the flags back: nothing more is registered, and a switch the user
    // turned off stays off.
    recorded.calls->calls.clear();
    Preferences preferences(settings.path());
    recorded.manager.applyFirstLaunchDefault(preferences);
    QVERIFY(preferences.startAtLogin());
    QVERIFY(preferences.setStartAtLogin(false));
    recorded.manager.applyFirstLaunchDefault(preferences);
    QVERIFY(!preferences.startAtLogin());
    QCOMPARE(recorded.calls->calls, QList<bool>());
    // Nor do the flags overwrite the snippets.
    SnippetStore store(settings.path());
    QVERIFY(std::any_of(store.categories().begin(), store.categories().end(),
                        [](const Category& c) { return c.name == QLatin1String("Work"); }));
}

void AutostartTest::defaultsUseTheUsersConfigFolder() {
    const QDir config(qEnvironmentVariable("XDG_CONFIG_HOME"));
    const QString settingsFile = config.filePath(QStringLiteral("Typolet/Typolet.conf"));
    QCOMPARE(Preferences().settingsPath(), settingsFile);
    QCOMPARE(SnippetStore().settingsPath(), settingsFile); // beside the snippets

    Autostart manager(std::make_unique<XdgAutostartBackend>());
    auto* backend = dynamic_cast<XdgAutostartBackend*>(&manager.backend());
    QVERIFY(backend != nullptr);
    QCOMPARE(backend->entryPath(), config.filePath(QStringLiteral("autostart/typolet.desktop")));
    QCOMPARE(backend->executable(), QCoreApplication::applicationFilePath());
}

TYPOLET_ISOLATED_TEST_MAIN(AutostartTest)
#include "AutostartTest.moc"
