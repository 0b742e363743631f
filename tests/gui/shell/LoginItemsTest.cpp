// Start at login: the autostart desktop entry, the failure lines, the first-appearance default
// and where the flags are kept.

#include "Diagnostics.h"
#include "IsolatedTestMain.h"
#include "LoginItemManager.h"
#include "LoginPreferences.h"
#include "RecordingLoginItemBackend.h"
#include "ShortcutDataManager.h"
#include "TemporarySettings.h"
#include "XdgAutostartBackend.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryDir>
#include <QtTest>

namespace {
QStringList lines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n');
}

// Collects diagnostic lines for the lifetime of the object.
class CapturedLines {
public:
    CapturedLines() {
        Diagnostics::setSink([this](const QString& text) { captured.append(text); });
    }
    ~CapturedLines() { Diagnostics::setSink({}); }
    QStringList captured;
};
} // namespace

class LoginItemsTest : public QObject {
    Q_OBJECT
private slots:
    void entryStartsTheGivenExecutable();
    void entryPassesTheDesktopEntryValidator();
    void execArgumentIsQuotedAndEscaped_data();
    void execArgumentIsQuotedAndEscaped();
    void registerCreatesTheFolderAndReplacesAnOldEntry();
    void unregisterRemovesOnlyTheEntry();
    void unregisterWithoutEntryIsNoFailure();
    void failuresPrintOneLineEach();
    void successPrintsNothing();
    void firstAppearanceTurnsStartAtLoginOn();
    void laterAppearancesDoNothing();
    void switchedOffStaysOff();
    void failedRegistrationKeepsTheSwitchOn();
    void sharedInstancesUseTheUsersConfigFolder();
    void flagsAndSnippetsShareTheFileWithoutOverwriting();
};

void LoginItemsTest::entryStartsTheGivenExecutable() {
    QTemporaryDir dir;
    XdgAutostartBackend backend(dir.filePath(QStringLiteral("autostart")),
                                QStringLiteral("/opt/Typolet apps/typolet"));
    QCOMPARE(backend.registerItem(), std::nullopt);
    QCOMPARE(backend.entryPath(), dir.filePath(QStringLiteral("autostart/typolet.desktop")));

    const QStringList content = lines(backend.entryPath());
    QCOMPARE(content.value(0), QStringLiteral("[Desktop Entry]"));
    QVERIFY(content.contains(QStringLiteral("Type=Application")));
    QVERIFY(content.contains(QStringLiteral("Name=Typolet")));
    QVERIFY(content.contains(QStringLiteral("Exec=\"/opt/Typolet apps/typolet\"")));
    QVERIFY(content.contains(QStringLiteral("Icon=typolet")));
    QVERIFY(content.contains(QStringLiteral("Terminal=false")));
    // One key per line, nothing duplicated, file ends with a line break.
    QCOMPARE(content.last(), QString());
    QCOMPARE(content.filter(QStringLiteral("Exec=")).size(), 1);

    // A desktop-entry reader finds the same values.
    QSettings reader(backend.entryPath(), QSettings::IniFormat);
    reader.beginGroup(QStringLiteral("Desktop Entry"));
    QCOMPARE(reader.value(QStringLiteral("Type")).toString(), QStringLiteral("Application"));
    QCOMPARE(reader.value(QStringLiteral("Name")).toString(), QStringLiteral("Typolet"));
}

void LoginItemsTest::entryPassesTheDesktopEntryValidator() {
    const QString validator =
        QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
    if (validator.isEmpty())
        QSKIP("desktop-file-validate is not installed (scripts/bootstrap installs it)");
    QTemporaryDir dir;
    XdgAutostartBackend backend(dir.filePath(QStringLiteral("autostart")),
                                QStringLiteral("/opt/My \"Apps\" 100%/typolet"));
    QCOMPARE(backend.registerItem(), std::nullopt);
    QProcess validate;
    validate.start(validator, {backend.entryPath()});
    QVERIFY(validate.waitForFinished(30000));
    QVERIFY2(validate.exitCode() == 0, validate.readAllStandardOutput().constData());
    QCOMPARE(validate.readAllStandardOutput(), QByteArray());
}

void LoginItemsTest::execArgumentIsQuotedAndEscaped_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("argument");
    QTest::newRow("plain") << QStringLiteral("/usr/bin/typolet")
                           << QStringLiteral("\"/usr/bin/typolet\"");
    QTest::newRow("spaces") << QStringLiteral("/home/a b/typolet")
                            << QStringLiteral("\"/home/a b/typolet\"");
    QTest::newRow("quote") << QStringLiteral("/x/\"q\"/typolet")
                           << QStringLiteral("\"/x/\\\\\"q\\\\\"/typolet\"");
    QTest::newRow("dollar and backquote")
        << QStringLiteral("/x/$HOME`/typolet") << QStringLiteral("\"/x/\\\\$HOME\\\\`/typolet\"");
    QTest::newRow("backslash") << QStringLiteral("/x/a\\b/typolet")
                               << QStringLiteral("\"/x/a\\\\\\\\b/typolet\"");
    QTest::newRow("percent") << QStringLiteral("/x/100%/typolet")
                             << QStringLiteral("\"/x/100%%/typolet\"");
}

void LoginItemsTest::execArgumentIsQuotedAndEscaped() {
    QFETCH(QString, path);
    QFETCH(QString, argument);
    QCOMPARE(XdgAutostartBackend::execArgument(path), argument);
}

void LoginItemsTest::registerCreatesTheFolderAndReplacesAnOldEntry() {
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("deep/autostart"));
    XdgAutostartBackend backend(folder, QStringLiteral("/usr/bin/typolet"));
    QVERIFY(!QFileInfo::exists(folder));
    QCOMPARE(backend.registerItem(), std::nullopt);
    QVERIFY(QFileInfo(backend.entryPath()).isFile());

    {
        QFile old(backend.entryPath());
        QVERIFY(old.open(QIODevice::WriteOnly | QIODevice::Truncate));
        old.write("[Desktop Entry]\nExec=/old/typolet --stale\nHidden=true\n");
    }
    QCOMPARE(backend.registerItem(), std::nullopt);
    QFile file(backend.entryPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), XdgAutostartBackend::entryContent(QStringLiteral("/usr/bin/typolet")));
    // Written through a temporary file that was renamed into place: nothing else is left.
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System),
             QStringList{QStringLiteral("typolet.desktop")});
}

void LoginItemsTest::unregisterRemovesOnlyTheEntry() {
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("autostart"));
    XdgAutostartBackend backend(folder, QStringLiteral("/usr/bin/typolet"));
    QCOMPARE(backend.registerItem(), std::nullopt);
    QFile other(QDir(folder).filePath(QStringLiteral("other.desktop")));
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.write("[Desktop Entry]\n");
    other.close();

    QCOMPARE(backend.unregisterItem(), std::nullopt);
    QVERIFY(!QFileInfo::exists(backend.entryPath()));
    QVERIFY(QFileInfo::exists(other.fileName()));
}

void LoginItemsTest::unregisterWithoutEntryIsNoFailure() {
    QTemporaryDir dir;
    XdgAutostartBackend backend(dir.filePath(QStringLiteral("autostart")),
                                QStringLiteral("/usr/bin/typolet"));
    QCOMPARE(backend.unregisterItem(), std::nullopt);
    QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("autostart"))));
}

void LoginItemsTest::failuresPrintOneLineEach() {
    QTemporaryDir dir;
    // A plain file where the autostart folder should be: the entry cannot be written.
    const QString blocked = dir.filePath(QStringLiteral("autostart"));
    {
        QFile file(blocked);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    LoginItemManager blockedManager(
        std::make_unique<XdgAutostartBackend>(blocked, QStringLiteral("/usr/bin/typolet")));

    // A folder (with content) where the entry should be: it cannot be removed.
    const QString folder = dir.filePath(QStringLiteral("other-autostart"));
    QVERIFY(QDir().mkpath(folder + QStringLiteral("/typolet.desktop/inside")));
    LoginItemManager stuckManager(
        std::make_unique<XdgAutostartBackend>(folder, QStringLiteral("/usr/bin/typolet")));

    CapturedLines output;
    blockedManager.setStartAtLogin(true);
    stuckManager.setStartAtLogin(false);

    QCOMPARE(output.captured.size(), 2);
    const QString enablePrefix = QStringLiteral("Failed to enable login item: ");
    const QString disablePrefix = QStringLiteral("Failed to disable login item: ");
    QVERIFY2(output.captured[0].startsWith(enablePrefix), qPrintable(output.captured[0]));
    QVERIFY(output.captured[0].size() > enablePrefix.size());
    QVERIFY2(output.captured[1].startsWith(disablePrefix), qPrintable(output.captured[1]));
    QVERIFY(output.captured[1].size() > disablePrefix.size());

    // The exact line is the prefix and the backend's error text.
    auto backend = std::make_unique<RecordingLoginItemBackend>();
    backend->registerError = QStringLiteral("no session bus");
    backend->unregisterError = QStringLiteral("entry is locked");
    LoginItemManager recorded(std::move(backend));
    output.captured.clear();
    recorded.setStartAtLogin(true);
    recorded.setStartAtLogin(false);
    QCOMPARE(output.captured,
             QStringList({QStringLiteral("Failed to enable login item: no session bus"),
                          QStringLiteral("Failed to disable login item: entry is locked")}));
}

void LoginItemsTest::successPrintsNothing() {
    QTemporaryDir dir;
    LoginItemManager manager(std::make_unique<XdgAutostartBackend>(
        dir.filePath(QStringLiteral("autostart")), QStringLiteral("/usr/bin/typolet")));
    CapturedLines output;
    manager.setStartAtLogin(true);
    QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral("autostart/typolet.desktop"))));
    manager.setStartAtLogin(false);
    QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("autostart/typolet.desktop"))));
    QCOMPARE(output.captured, QStringList());
}

void LoginItemsTest::firstAppearanceTurnsStartAtLoginOn() {
    TemporarySettings settings;
    LoginPreferences preferences(settings.path());
    auto backend = std::make_unique<RecordingLoginItemBackend>();
    RecordingLoginItemBackend* calls = backend.get();
    LoginItemManager manager(std::move(backend));
    QSignalSpy changed(&preferences, &LoginPreferences::startAtLoginChanged);

    QVERIFY(!preferences.startAtLogin());
    QVERIFY(!preferences.hasLaunchedBefore());
    manager.applyFirstLaunchDefault(preferences);

    QCOMPARE(calls->calls, QList<bool>({true, true}));
    QVERIFY(preferences.startAtLogin());
    QVERIFY(preferences.hasLaunchedBefore());
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.at(0).at(0).toBool(), true);
    // On disk at once, as booleans, beside the snippets.
    QCOMPARE(settings.read(QStringLiteral("startAtLogin")).toBool(), true);
    QCOMPARE(settings.read(QStringLiteral("hasLaunchedBefore")).toBool(), true);
}

void LoginItemsTest::laterAppearancesDoNothing() {
    TemporarySettings settings;
    auto backend = std::make_unique<RecordingLoginItemBackend>();
    RecordingLoginItemBackend* calls = backend.get();
    LoginItemManager manager(std::move(backend));
    {
        LoginPreferences preferences(settings.path());
        manager.applyFirstLaunchDefault(preferences);
    }
    calls->calls.clear();
    // A later run of the program reads the flags back from the file.
    LoginPreferences preferences(settings.path());
    manager.applyFirstLaunchDefault(preferences);
    manager.applyFirstLaunchDefault(preferences);
    QCOMPARE(calls->calls, QList<bool>());
    QVERIFY(preferences.startAtLogin());
}

void LoginItemsTest::switchedOffStaysOff() {
    TemporarySettings settings;
    LoginPreferences preferences(settings.path());
    auto backend = std::make_unique<RecordingLoginItemBackend>();
    RecordingLoginItemBackend* calls = backend.get();
    LoginItemManager manager(std::move(backend));
    manager.applyFirstLaunchDefault(preferences);
    calls->calls.clear();

    QVERIFY(preferences.setStartAtLogin(false));
    manager.applyFirstLaunchDefault(preferences);
    QVERIFY(!preferences.startAtLogin());
    QCOMPARE(settings.read(QStringLiteral("startAtLogin")).toBool(), false);
    QCOMPARE(calls->calls, QList<bool>());
}

void LoginItemsTest::failedRegistrationKeepsTheSwitchOn() {
    TemporarySettings settings;
    LoginPreferences preferences(settings.path());
    auto backend = std::make_unique<RecordingLoginItemBackend>();
    backend->registerError = QStringLiteral("autostart folder is read-only");
    LoginItemManager manager(std::move(backend));

    CapturedLines output;
    manager.applyFirstLaunchDefault(preferences);
    const QString line =
        QStringLiteral("Failed to enable login item: autostart folder is read-only");
    QCOMPARE(output.captured, QStringList({line, line}));
    QVERIFY(preferences.startAtLogin());
    QVERIFY(preferences.hasLaunchedBefore());
}

void LoginItemsTest::sharedInstancesUseTheUsersConfigFolder() {
    const QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    QVERIFY(!config.isEmpty());

    const QString settingsFile = QDir(config).filePath(QStringLiteral("Typolet/Typolet.conf"));
    QCOMPARE(LoginPreferences::shared().settingsPath(), settingsFile);
    // The flags sit in the same file as the snippets.
    ShortcutDataManager store;
    QCOMPARE(store.settingsPath(), settingsFile);

    LoginItemManager& manager = LoginItemManager::shared();
    QCOMPARE(&manager, &LoginItemManager::shared());
    auto* backend = dynamic_cast<XdgAutostartBackend*>(&manager.backend());
    QVERIFY(backend != nullptr);
    QCOMPARE(backend->entryPath(),
             QDir(config).filePath(QStringLiteral("autostart/typolet.desktop")));
    QCOMPARE(backend->executable(), QCoreApplication::applicationFilePath());

    CapturedLines output;
    manager.setStartAtLogin(true);
    const QStringList content = lines(backend->entryPath());
    QVERIFY(content.contains(
        QStringLiteral("Exec=") +
        XdgAutostartBackend::execArgument(QCoreApplication::applicationFilePath())));
    manager.setStartAtLogin(false);
    QVERIFY(!QFileInfo::exists(backend->entryPath()));
    QCOMPARE(output.captured, QStringList());
}

void LoginItemsTest::flagsAndSnippetsShareTheFileWithoutOverwriting() {
    TemporarySettings settings;
    ShortcutDataManager store(settings.path());
    LoginPreferences preferences(settings.path());
    QVERIFY(preferences.setStartAtLogin(true));
    QVERIFY(preferences.setHasLaunchedBefore(true));
    QVERIFY(!store.addCategory(QStringLiteral("Work")).has_value());
    QVERIFY(preferences.setStartAtLogin(false));

    // A later run reads all of it back.
    ShortcutDataManager storeAgain(settings.path());
    LoginPreferences preferencesAgain(settings.path());
    QVERIFY(!preferencesAgain.startAtLogin());
    QVERIFY(preferencesAgain.hasLaunchedBefore());
    bool found = false;
    for (const CategoryRef& category : storeAgain.categories())
        found = found || category->name() == QLatin1String("Work");
    QVERIFY(found);
    // Booleans, as written, beside the two lists.
    QCOMPARE(settings.read(QStringLiteral("hasLaunchedBefore")).toBool(), true);
    QVERIFY(settings.contains(QStringLiteral("Categories")));
}

TYPOLET_ISOLATED_TEST_MAIN(LoginItemsTest)
#include "LoginItemsTest.moc"
