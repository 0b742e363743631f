// Typolet under a real X server: the tray icon in a real system tray and its menu, the quit
// question and "Run in Background", "Open Typolet", a second launch, and a desktop without a
// tray. Windows are found and checked with xwininfo, the user is played with xdotool.

#include "XvfbSession.h"

#include <QFileInfo>
#include <QSettings>
#include <QtTest>

namespace {
constexpr int patienceMs = 20000;

QString program() {
    const QString fromEnvironment = qEnvironmentVariable("TYPOLET_E2E_PROGRAM");
    return fromEnvironment.isEmpty() ? QStringLiteral(TYPOLET_E2E_PROGRAM) : fromEnvironment;
}

QString instanceName() {
    return QFileInfo(program()).fileName();
}

// The program's windows that are direct children of the root window, largest first.
QList<XvfbSession::Window> topLevels(const XvfbSession& x) {
    QList<XvfbSession::Window> found;
    const QList<XvfbSession::Window> all = x.windows();
    for (const XvfbSession::Window& w : all)
        if (w.depth == 1 && w.instance == instanceName())
            found.append(w);
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a.width * a.height > b.width * b.height; });
    return found;
}

// The program's window embedded in trayer's panel (the tray icon).
std::optional<XvfbSession::Window> trayIcon(const XvfbSession& x) {
    const QList<XvfbSession::Window> all = x.windows();
    for (const XvfbSession::Window& w : all)
        if (w.depth > 1 && w.instance == instanceName() && w.ancestorName == u"panel")
            return w;
    return std::nullopt;
}

QStringList viewableIds(const XvfbSession& x) {
    QStringList ids;
    const QList<XvfbSession::Window> windows = topLevels(x);
    for (const XvfbSession::Window& w : windows)
        if (x.isViewable(w.id))
            ids << w.id;
    return ids;
}
} // namespace

class ShellTrayTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void runInBackgroundThenOpenTypolet();
    void secondLaunchExitsAndRaisesTheFirst();
    void withoutATrayItRunsWithItsWindow();
    void keepsExpandingInTheBackground();

private:
    // Starts the program and waits for its main window (and its tray icon, with a tray).
    bool startTypolet(XvfbSession& x, bool withTray);
    // Clicks the tray icon and waits for the menu to open; returns the menu's window id.
    QString openTrayMenu(XvfbSession& x);
    // From the tray menu: "Quit", then "Run in Background" in the question.
    bool runInBackground(XvfbSession& x);

    QString m_mainWindow;
    QProcess* m_typolet = nullptr;
};

void ShellTrayTest::init() {
    const QStringList missing = XvfbSession::missingTools(true);
    if (!missing.isEmpty())
        QFAIL(qPrintable(QStringLiteral("missing: ") + missing.join(u' ') +
                         QStringLiteral(" (scripts/bootstrap installs them)")));
    QVERIFY2(QFileInfo(program()).isExecutable(), qPrintable(program()));
    m_mainWindow.clear();
    m_typolet = nullptr;
}

bool ShellTrayTest::startTypolet(XvfbSession& x, bool withTray) {
    m_typolet = x.launch(program());
    if (!m_typolet->waitForStarted(patienceMs))
        return false;
    if (!QTest::qWaitFor([&] { return !viewableIds(x).isEmpty(); }, patienceMs))
        return false;
    m_mainWindow = topLevels(x).first().id;
    if (withTray && !QTest::qWaitFor([&] { return trayIcon(x).has_value(); }, patienceMs))
        return false;
    return true;
}

QString ShellTrayTest::openTrayMenu(XvfbSession& x) {
    const std::optional<XvfbSession::Window> icon = trayIcon(x);
    if (!icon)
        return {};
    const QStringList before = viewableIds(x);
    x.click(icon->x + icon->width / 2, icon->y + icon->height / 2);
    QString menu;
    const bool opened = QTest::qWaitFor(
        [&] {
            for (const QString& id : viewableIds(x))
                if (!before.contains(id))
                    menu = id;
            return !menu.isEmpty();
        },
        patienceMs);
    return opened ? menu : QString();
}

bool ShellTrayTest::runInBackground(XvfbSession& x) {
    const QString menu = openTrayMenu(x);
    if (menu.isEmpty())
        return false;
    const QStringList before = viewableIds(x);
    x.key(QStringLiteral("Up Return")); // the last entry, "Quit"
    // The question opens with "Quit" as the default button; the next one is "Run in
    // Background".
    QString question;
    if (!QTest::qWaitFor(
            [&] {
                for (const QString& id : viewableIds(x))
                    if (!before.contains(id) && id != menu)
                        question = id;
                return !question.isEmpty();
            },
            patienceMs))
        return false;
    x.key(QStringLiteral("Tab space"));
    return QTest::qWaitFor([&] { return viewableIds(x).isEmpty(); }, patienceMs);
}

void ShellTrayTest::runInBackgroundThenOpenTypolet() {
    XvfbSession x;
    QVERIFY2(x.start(true), qPrintable(x.error()));
    QVERIFY(startTypolet(x, true));

    QVERIFY(runInBackground(x));
    QCOMPARE(m_typolet->state(), QProcess::Running);
    // Still in the tray, with its icon intact.
    const std::optional<XvfbSession::Window> icon = trayIcon(x);
    QVERIFY(icon.has_value());
    QVERIFY(x.isViewable(icon->id));
    QVERIFY(icon->width >= 16);

    QVERIFY(!openTrayMenu(x).isEmpty());
    x.key(QStringLiteral("Down Return")); // the first entry, "Open Typolet"
    QVERIFY(QTest::qWaitFor([&] { return x.isViewable(m_mainWindow); }, patienceMs));
    QCOMPARE(m_typolet->state(), QProcess::Running);

    // Again, with the keys the menu shows.
    QVERIFY(runInBackground(x));
    QVERIFY(!openTrayMenu(x).isEmpty());
    x.key(QStringLiteral("ctrl+o"));
    QVERIFY(QTest::qWaitFor([&] { return x.isViewable(m_mainWindow); }, patienceMs));
}

void ShellTrayTest::keepsExpandingInTheBackground() {
    if (QFileInfo(program()).fileName() != QLatin1String("typolet"))
        QSKIP("the stand-in program has no keyboard engine");
    XvfbSession x;
    QVERIFY2(x.start(true), qPrintable(x.error()));
    {
        QSettings settings(x.configFolder() + QStringLiteral("/Typolet/Typolet.conf"),
                           QSettings::NativeFormat);
        settings.setValue(QStringLiteral("Shortcuts"),
                          QByteArray(R"json([{"id":"0F8E7D6C-5B4A-4392-8170-6F5E4D3C2B1A",)json"
                                     R"json("command":";bg","content":"from the background",)json"
                                     R"json("createdAt":0,"categoryId":)json"
                                     R"json("00000000-0000-0000-0000-000000000000"}])json"));
        settings.sync();
    }
    qputenv("TYPOLET_DIAGNOSTICS", "1"); // match lines are how the test sees an expansion
    QVERIFY(startTypolet(x, true));
    QVERIFY(runInBackground(x));
    QVERIFY(!x.isViewable(m_mainWindow));

    QByteArray output;
    const bool expanded = QTest::qWaitFor([&] {
        x.tool(QStringLiteral("xdotool"), {QStringLiteral("type"), QStringLiteral(";bg")});
        return QTest::qWaitFor([&] {
            output += m_typolet->readAllStandardError();
            return output.contains("Match found: ';bg' -> 'from the background'");
        }, 1000);
    }, patienceMs);
    qunsetenv("TYPOLET_DIAGNOSTICS");
    QVERIFY2(expanded, output.right(2000).constData());
    QCOMPARE(m_typolet->state(), QProcess::Running);
}

void ShellTrayTest::secondLaunchExitsAndRaisesTheFirst() {
    XvfbSession x;
    QVERIFY2(x.start(true), qPrintable(x.error()));
    QVERIFY(startTypolet(x, true));
    QVERIFY(runInBackground(x));

    QProcess* second = x.launch(program());
    QVERIFY(second->waitForFinished(patienceMs));
    QCOMPARE(second->exitStatus(), QProcess::NormalExit);
    QCOMPARE(second->exitCode(), 0);
    QVERIFY(second->readAllStandardError().contains("already running"));
    QVERIFY(QTest::qWaitFor([&] { return x.isViewable(m_mainWindow); }, patienceMs));
    QCOMPARE(m_typolet->state(), QProcess::Running);
    // The second launch left no window and no tray icon of its own.
    int icons = 0;
    for (const XvfbSession::Window& w : x.windows())
        icons += (w.instance == instanceName() && w.ancestorName == u"panel") ? 1 : 0;
    QCOMPARE(icons, 1);
}

void ShellTrayTest::withoutATrayItRunsWithItsWindow() {
    XvfbSession x;
    QVERIFY2(x.start(false), qPrintable(x.error()));
    QVERIFY(startTypolet(x, false));
    QVERIFY(x.isViewable(m_mainWindow));
    QVERIFY(!trayIcon(x).has_value());
    // Still running once the event loop has settled (nothing waited for a tray).
    QVERIFY(!m_typolet->waitForFinished(1000));
    QCOMPARE(m_typolet->state(), QProcess::Running);
}

QTEST_GUILESS_MAIN(ShellTrayTest)
#include "ShellTrayTest.moc"
