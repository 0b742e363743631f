// Typolet under a real X server with a real system tray (trayer, an XEmbed tray that runs
// without a desktop): the tray icon and its menu, the quit question and "Run in Background",
// "Open Typolet", expanding in the background, a second launch, and a desktop without a tray.
// Windows are found with xwininfo; the user is played with xdotool.

#include "XSession.h"

#include <QRegularExpression>
#include <QtTest>
#include <optional>

namespace {
// One window of the server's tree, as xwininfo reports it.
struct Window {
    QString id;
    QString name;
    QString instance; // the first part of WM_CLASS
    int depth = 0;    // 1 for children of the root window
    int width = 0, height = 0, x = 0, y = 0;
    QString ancestorName; // WM_NAME of the nearest named ancestor below the root
};

QList<Window> windows(const XSession& x) {
    // "     0x400006 "Typolet": ("typolet" "Typolet")  1100x700+0+0  +0+0"
    static const QRegularExpression line(QStringLiteral(
        "^(\\s+)(0x[0-9a-f]+) (?:\"(.*)\"|\\(has no name\\)): \\((?:\"([^\"]*)\"[^)]*)?\\)\\s+"
        "(\\d+)x(\\d+)[+-]-?\\d+[+-]-?\\d+\\s+\\+?(-?\\d+)\\+?(-?\\d+)\\s*$"));
    QList<Window> result;
    QStringList named; // by depth
    const QString tree = x.output(QStringLiteral("xwininfo"), {"-root", "-tree"});
    for (const QString& text : tree.split(u'\n')) {
        const QRegularExpressionMatch m = line.match(text);
        if (!m.hasMatch())
            continue;
        // The root's children are indented by five spaces, each level by three more.
        Window w{m.captured(2), m.captured(3), m.captured(4),
                 int((m.capturedLength(1) - 5) / 3 + 1), m.captured(5).toInt(),
                 m.captured(6).toInt(), m.captured(7).toInt(), m.captured(8).toInt(), {}};
        named.resize(w.depth);
        for (int d = w.depth - 2; d >= 0 && w.ancestorName.isEmpty(); --d)
            w.ancestorName = named[d];
        named[w.depth - 1] = w.name;
        result.append(w);
    }
    return result;
}

bool isViewable(const XSession& x, const QString& id) {
    return x.output(QStringLiteral("xwininfo"), {"-id", id}).contains("Map State: IsViewable");
}

// Typolet's viewable top-level windows.
QStringList shownWindows(const XSession& x) {
    QStringList ids;
    for (const Window& w : windows(x))
        if (w.depth == 1 && w.instance == u"typolet" && isViewable(x, w.id))
            ids << w.id;
    return ids;
}

// Typolet's windows embedded in trayer's panel.
QList<Window> trayIcons(const XSession& x) {
    QList<Window> icons;
    for (const Window& w : windows(x))
        if (w.depth > 1 && w.instance == u"typolet" && w.ancestorName == u"panel")
            icons << w;
    return icons;
}
} // namespace

class ShellTrayE2eTest : public QObject {
    Q_OBJECT
private slots:
    void runInBackgroundThenOpenTypolet();
    void excludeFromTheTrayMenuTakesTheApplicationInUse();
    void secondLaunchExitsAndRaisesTheFirst();
    void withoutATrayItRunsWithItsWindow();

private:
    // The tray (when asked), then Typolet with its main window (and its tray icon).
    void start(XSession& x, bool withTray);
    // Clicks the tray icon and waits for the menu; returns the menu's window id.
    QString openTrayMenu(XSession& x);
    // From the tray menu: "Quit", then "Run in Background" in the question.
    bool runInBackground(XSession& x);
    QString m_mainWindow;
};

void ShellTrayE2eTest::start(XSession& x, bool withTray) {
    QVERIFY2(x.isRunning(), qPrintable(x.log()));
    if (withTray) {
        x.start(QStringLiteral("trayer"), {"--edge", "top", "--align", "right"});
        QVERIFY2(XSession::waitFor([&] {
                     const QList<Window> all = windows(x);
                     return std::any_of(all.begin(), all.end(),
                                        [](const Window& w) { return w.name == u"panel"; });
                 }),
                 "trayer's panel did not appear (scripts/bootstrap installs trayer)");
    }
    QVERIFY2(x.startTypolet(), qPrintable(x.log()));
    QVERIFY(XSession::waitFor([&] { return !shownWindows(x).isEmpty(); }));
    m_mainWindow = shownWindows(x).first();
    if (withTray)
        QVERIFY(XSession::waitFor([&] { return !trayIcons(x).isEmpty(); }));
}

QString ShellTrayE2eTest::openTrayMenu(XSession& x) {
    const QList<Window> icons = trayIcons(x);
    if (icons.isEmpty())
        return {};
    const QStringList before = shownWindows(x);
    const Window& icon = icons.first();
    x.run(QStringLiteral("xdotool"), {"mousemove", QString::number(icon.x + icon.width / 2),
                                      QString::number(icon.y + icon.height / 2), "click", "1"});
    QString menu;
    XSession::waitFor([&] {
        for (const QString& id : shownWindows(x))
            if (!before.contains(id))
                menu = id;
        return !menu.isEmpty();
    });
    return menu;
}

bool ShellTrayE2eTest::runInBackground(XSession& x) {
    const QString menu = openTrayMenu(x);
    if (menu.isEmpty())
        return false;
    const QStringList before = shownWindows(x);
    x.run(QStringLiteral("xdotool"), {"key", "Up", "Return"}); // the last entry, "Quit"
    // The question opens with "Quit" as the default button; the next is "Run in Background".
    if (!XSession::waitFor([&] {
            const QStringList now = shownWindows(x);
            return std::any_of(now.begin(), now.end(), [&](const QString& id) {
                return !before.contains(id) && id != menu;
            });
        }))
        return false;
    x.run(QStringLiteral("xdotool"), {"key", "Tab", "space"});
    return XSession::waitFor([&] { return shownWindows(x).isEmpty(); });
}

void ShellTrayE2eTest::runInBackgroundThenOpenTypolet() {
    XSession x;
    x.writeSnippets({{";bg", "from the background"}});
    start(x, true);
    QVERIFY(runInBackground(x));
    QCOMPARE(trayIcons(x).size(), 1); // still in the tray, and still expanding
    QVERIFY(trayIcons(x).first().width >= 16);
    QVERIFY(x.run(QStringLiteral("xdotool"), {"type", ";bg"}));
    QVERIFY2(x.waitForExpansions(1), qPrintable(x.typoletOutput().right(2000)));
    QVERIFY(x.typoletOutput().contains("Match found: ';bg' -> 'from the background'"));

    QVERIFY(!openTrayMenu(x).isEmpty());
    x.run(QStringLiteral("xdotool"), {"key", "Down", "Return"}); // "Open Typolet"
    QVERIFY(XSession::waitFor([&] { return isViewable(x, m_mainWindow); }));

    // Again, with the key the menu shows.
    QVERIFY(runInBackground(x));
    QVERIFY(!openTrayMenu(x).isEmpty());
    x.run(QStringLiteral("xdotool"), {"key", "ctrl+o"});
    QVERIFY(XSession::waitFor([&] { return isViewable(x, m_mainWindow); }));
}

void ShellTrayE2eTest::excludeFromTheTrayMenuTakesTheApplicationInUse() {
    XSession x;
    start(x, true);
    QVERIFY(x.startTerminal(x.file(QStringLiteral("typed")), QStringLiteral("NoSnippets")));
    QVERIFY(x.focusTarget());
    QVERIFY(!openTrayMenu(x).isEmpty());
    x.run(QStringLiteral("xdotool"), {"key", "Down", "Down", "Down", "Return"}); // "Exclude …"
    const QString settings = x.file(QStringLiteral("Typolet/Typolet.conf"));
    QVERIFY2(XSession::waitFor([&] { return XSession::readText(settings).contains("NoSnippets"); }),
             qPrintable(XSession::readText(settings)));
}

void ShellTrayE2eTest::secondLaunchExitsAndRaisesTheFirst() {
    XSession x;
    start(x, true);
    QVERIFY(runInBackground(x));

    QProcess* second = x.start(QStringLiteral(TYPOLET_EXECUTABLE), {});
    QVERIFY(second->waitForFinished(20000));
    QCOMPARE(second->exitStatus(), QProcess::NormalExit);
    QCOMPARE(second->exitCode(), 0);
    QVERIFY(second->readAllStandardError().contains("already running"));
    QVERIFY(XSession::waitFor([&] { return isViewable(x, m_mainWindow); }));
    QCOMPARE(x.typolet()->state(), QProcess::Running);
    QCOMPARE(trayIcons(x).size(), 1); // no window or icon of its own
}

void ShellTrayE2eTest::withoutATrayItRunsWithItsWindow() {
    XSession x;
    start(x, false);
    // Still running once the event loop has settled (nothing waited for a tray).
    QVERIFY(!x.typolet()->waitForFinished(1000));
    QVERIFY(isViewable(x, m_mainWindow));
}

QTEST_GUILESS_MAIN(ShellTrayE2eTest)
#include "ShellTrayE2eTest.moc"
