// The tray controller: the windows it shows and hides, the quit question before any quit.

#include "TrayController.h"
#include "AlertDriver.h"
#include "IsolatedTestMain.h"
#include "Autostart.h"
#include "Preferences.h"
#include "RecordingAutostartBackend.h"
#include "TemporarySettings.h"
#include "ContentView.h"
#include "CustomTextEditor.h"
#include "SnippetDetailView.h"
#include "SnippetForm.h"
#include "SnippetStore.h"
#include "SymbolImage.h"

#include <QAbstractButton>
#include <QMessageBox>

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSystemTrayIcon>
#include <QtTest>

namespace {
// The main window around the snippet editor, with the menus and the tray set up.
struct Fixture {
    TemporarySettings settings;
    SnippetStore store{settings.path()};
    Preferences preferences{settings.path()};
    Autostart autostart{std::make_unique<RecordingAutostartBackend>()};
    QMainWindow mainWindow;
    ContentView* editor = new ContentView(store); // owned by the main window
    TrayController tray{autostart, preferences};

    explicit Fixture(const QList<Snippet>& snippets = {}) {
        for (const Snippet& snippet : snippets)
            QVERIFY(!store.addSnippet(snippet));
        mainWindow.setCentralWidget(editor);
        mainWindow.show();
        tray.setUp(&mainWindow);
    }
    bool inBackground() { return tray.appWindows().inBackground(); }
    // Opens the tray menu as a click on the tray icon does.
    QMenu* openTrayMenu() {
        tray.trayMenu()->popup(QPoint(10, 10));
        return QTest::qWaitForWindowExposed(tray.trayMenu()) ? tray.trayMenu()
                                                                   : nullptr;
    }
};

// Runs `work` inside the application's event loop and returns the loop's exit code: 0 when
// the work made the program quit, 99 when the loop was still running after it.
int runLoop(const std::function<void()>& work) {
    QObject scope; // drops the timers below if they have not fired when this returns
    QTimer::singleShot(0, &scope, [&scope, work] {
        work();
        QTimer::singleShot(0, &scope, [] { QCoreApplication::exit(99); });
    });
    return QCoreApplication::exec();
}
} // namespace

class TrayControllerTest : public QObject {
    Q_OBJECT
private slots:
    void withoutATrayClosingTheWindowDoesNotQuit();
    void pauseIsOneSwitchInBothMenusAndKept();
    void excludeTakesTheApplicationTypedInLast();
    void pausedLooksPaused();
    void runInBackgroundThenOpenTypoletBringsBackEveryWindow();
    void everyQuitRequestAsksFirst_data();
    void everyQuitRequestAsksFirst();
    void signalsEndItWithoutAsking();
    void theMenusAreFileEditHelp();
    void quittingSettlesTheEditorsEdits_data();
    void quittingSettlesTheEditorsEdits();
};

// Without a tray (the offscreen platform has none) Typolet runs with its window, and closing
// that window does not quit.
void TrayControllerTest::withoutATrayClosingTheWindowDoesNotQuit() {
    Fixture f;
    QVERIFY(!f.inBackground());
    QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());
    QCOMPARE(f.tray.trayIcon(), nullptr);
    QSignalSpy terminating(&f.tray, &TrayController::terminating);
    QCOMPARE(runLoop([&] { f.mainWindow.close(); }), 99);
    QCOMPARE(terminating.size(), 0);
}

void TrayControllerTest::pauseIsOneSwitchInBothMenusAndKept() {
    Fixture f;
    QAction* pause = f.tray.pauseAction();
    QVERIFY(f.tray.fileMenu()->actions().contains(pause));
    QVERIFY(f.tray.trayMenu()->actions().contains(pause));
    QVERIFY(!pause->isChecked());
    pause->trigger();
    QVERIFY(f.preferences.paused());
    QVERIFY(Preferences(f.settings.path()).paused()); // on disk: it survives a restart
    f.preferences.setPaused(false); // changed elsewhere: the menus follow
    QVERIFY(!pause->isChecked());
}

void TrayControllerTest::excludeTakesTheApplicationTypedInLast() {
    Fixture f;
    QString last;
    f.tray.setLastApplicationSource([&last] { return last; });
    QAction* exclude = f.tray.excludeAction();
    QVERIFY(f.openTrayMenu());
    QVERIFY(!exclude->isEnabled()); // nothing typed anywhere yet
    f.tray.trayMenu()->hide();
    last = QStringLiteral("XTerm");
    QVERIFY(f.openTrayMenu());
    QVERIFY(exclude->isEnabled() && exclude->text().contains("XTerm"));
    exclude->trigger();
    QCOMPARE(f.preferences.excludedApplications(), QStringList{"XTerm"});
    f.tray.trayMenu()->hide();
    // Once excluded, the same entry includes it again, as does the list of excluded ones.
    QVERIFY(f.openTrayMenu());
    QCOMPARE(exclude->text(), QStringLiteral("Include “XTerm” Again"));
    QVERIFY(f.tray.excludedMenu()->menuAction()->isVisible());
    f.tray.excludedMenu()->actions().constFirst()->trigger();
    QVERIFY(f.preferences.excludedApplications().isEmpty());
    f.tray.trayMenu()->hide();
    // Typolet's own windows are never offered.
    last = QStringLiteral("typolet");
    QVERIFY(f.openTrayMenu());
    QVERIFY(!exclude->isEnabled());
    QVERIFY(!f.tray.excludedMenu()->menuAction()->isVisible());
    f.tray.trayMenu()->hide();
}

// Paused shows: a pause badge on the icon and the word in the tooltip.
void TrayControllerTest::pausedLooksPaused() {
    QCOMPARE(TrayController::toolTipText(false), QStringLiteral("Typolet \u2014 expanding"));
    QCOMPARE(TrayController::toolTipText(true), QStringLiteral("Typolet \u2014 paused"));
    const QImage on = SymbolImage::trayIcon(false).pixmap(22, 22).toImage();
    const QImage paused = SymbolImage::trayIcon(true).pixmap(22, 22).toImage();
    // The badge's disc is dark and opaque in the corner, whatever the bubble has there.
    const QColor corner = paused.pixelColor(15, 20); // below and between the bars
    QVERIFY(corner.alpha() == 255 && corner.lightness() < 60);
    QVERIFY(on != paused);
}

void TrayControllerTest::runInBackgroundThenOpenTypoletBringsBackEveryWindow() {
    Fixture f;
    QVERIFY(QTest::qWaitForWindowActive(&f.mainWindow));
    QTest::keyClick(&f.mainWindow, Qt::Key_Comma, Qt::ControlModifier); // "Preferences…"
    f.tray.helpMenu()->findChild<QAction*>(QStringLiteral("about"))->trigger();
    const QList<QWidget*> windows = {&f.mainWindow, f.tray.preferencesWindow()};
    for (const QWidget* window : windows)
        QVERIFY(window && window->isVisible());
    QVERIFY(f.tray.aboutWindow()->isVisible());
    QVERIFY(!f.inBackground());
    // Closed by the user with Ctrl+W: it stays closed when the others come back.
    QVERIFY(QTest::qWaitForWindowActive(f.tray.aboutWindow()));
    QTest::keyClick(f.tray.aboutWindow(), Qt::Key_W, Qt::ControlModifier);
    QVERIFY(!f.tray.aboutWindow()->isVisible());

    AlertDriver driver(AlertDriver::click(QStringLiteral("Run in Background")));
    QVERIFY(!f.tray.confirmQuit());
    QVERIFY(f.inBackground());
    for (const QWidget* window : windows)
        QVERIFY(!window->isVisible());

    // Ctrl+O in the open tray menu: "Open Typolet", without clashing with the menu bar's keys.
    QMenu* menu = f.openTrayMenu();
    QVERIFY(menu);
    QTest::keyClick(menu, Qt::Key_O, Qt::ControlModifier);
    QVERIFY(!menu->isVisible());
    QVERIFY(!f.inBackground());
    for (const QWidget* window : windows)
        QVERIFY(window->isVisible());
    QVERIFY(!f.tray.aboutWindow()->isVisible());
    // Closed windows stay closed on a second launch too, but the main window always comes.
    f.mainWindow.close();
    f.tray.preferencesWindow()->close();
    f.tray.openApp();
    QVERIFY(f.mainWindow.isVisible() && !f.tray.preferencesWindow()->isVisible());
}

void TrayControllerTest::everyQuitRequestAsksFirst_data() {
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("answer");
    for (const char* request : {"Ctrl+Q in the main window", "Ctrl+Q in Preferences",
                                "Ctrl+Q in the tray menu", "quit()", "session end"})
        for (const char* answer : {"Quit", "Run in Background", "Cancel"})
            QTest::addRow("%s, %s", request, answer)
                << QString::fromUtf8(request) << QString::fromUtf8(answer);
}

void TrayControllerTest::everyQuitRequestAsksFirst() {
    QFETCH(QString, request);
    QFETCH(QString, answer);
    Fixture f;
    QWidget* keyTarget = nullptr;
    if (request.endsWith(QLatin1String("main window"))) {
        keyTarget = &f.mainWindow;
        QVERIFY(QTest::qWaitForWindowActive(keyTarget));
    } else if (request.endsWith(QLatin1String("Preferences"))) {
        f.tray.showPreferences();
        keyTarget = f.tray.preferencesWindow();
        QVERIFY(QTest::qWaitForWindowActive(keyTarget));
    } else if (request.endsWith(QLatin1String("tray menu"))) {
        keyTarget = f.openTrayMenu();
        QVERIFY(keyTarget != nullptr);
    }
    QSignalSpy terminating(&f.tray, &TrayController::terminating);
    AlertDriver driver(AlertDriver::click(answer));
    // quit() is what the desktop's own quit request, or anyone else's, looks like to Typolet.
    const bool ended = request == QLatin1String("session end")
                           ? f.tray.confirmQuit()
                           : runLoop([&] {
                                 if (keyTarget)
                                     QTest::keyClick(keyTarget, Qt::Key_Q, Qt::ControlModifier);
                                 else
                                     QCoreApplication::quit();
                             }) == 0;
    QCOMPARE(driver.acted(), 1); // once, also when "Quit" let the request through
    QCOMPARE(driver.seenText(), QStringLiteral("Quit Typolet?"));
    const bool quits = answer == QLatin1String("Quit");
    const bool inBackground = answer == QLatin1String("Run in Background");
    QCOMPARE(ended, quits);
    QCOMPARE(terminating.size(), quits ? 1 : 0);
    QCOMPARE(f.inBackground(), inBackground);
    if (!quits) // quitting closes the windows on its way out
        QCOMPARE(f.mainWindow.isVisible(), !inBackground);
}

void TrayControllerTest::signalsEndItWithoutAsking() {
    Fixture f;
    QSignalSpy terminating(&f.tray, &TrayController::terminating);
    // Any question would be answered "Cancel", which would keep the loop running.
    AlertDriver driver(AlertDriver::click(QStringLiteral("Cancel")));
    QCOMPARE(runLoop([&] { f.tray.terminateWithoutAsking(); }), 0);
    QCOMPARE(driver.acted(), 0);
    QCOMPARE(terminating.size(), 1);
}

// The desktop's menu layout, no menu named after the program, one ellipsis.
void TrayControllerTest::theMenusAreFileEditHelp() {
    Fixture f;
    TrayController& tray = f.tray;
    QAction extra(QStringLiteral("Import\u2026"));
    tray.addLibraryActions({&extra});
    QStringList menus;
    for (const QAction* menu : f.mainWindow.menuBar()->actions())
        menus << menu->text();
    QCOMPARE(menus, (QStringList{"&File", "&Edit", "&Help"}));
    const auto entries = [](const QMenu* menu) {
        QStringList shown;
        for (const QAction* action : menu->actions())
            if (!action->isSeparator())
                shown << action->text().section(QLatin1Char('\t'), 0, 0) + QLatin1Char('|') +
                             action->shortcut().toString();
        return shown;
    };
    QCOMPARE(entries(tray.fileMenu()),
             (QStringList{"New Snippet\u2026|Ctrl+N", "New Category\u2026|Ctrl+Shift+N",
                          "Import\u2026|", "Pause Expansion|", "Quit|Ctrl+Q"}));
    QCOMPARE(entries(tray.editMenu()),
             (QStringList{"Find|Ctrl+F", "Delete\u2026|Del", "Preferences\u2026|Ctrl+,"}));
    QCOMPARE(entries(tray.helpMenu()), (QStringList{"Typolet Help|F1", "About Typolet|"}));
}

void TrayControllerTest::quittingSettlesTheEditorsEdits_data() {
    QTest::addColumn<QString>("answer"); // empty: saved without asking
    QTest::addColumn<bool>("quits");
    QTest::addColumn<QString>("stored");
    QTest::newRow("Save") << "Save" << true << "Hello!";
    QTest::newRow("Discard") << "Discard" << true << "Hello";
    QTest::newRow("Cancel") << "Cancel" << false << "Hello";
    QTest::newRow("saved without asking") << QString() << true << "Hello!";
}

// "Quit" with a snippet edited but not saved: the edit is saved, discarded, or the quit is off.
void TrayControllerTest::quittingSettlesTheEditorsEdits() {
    QFETCH(QString, answer);
    QFETCH(bool, quits);
    QFETCH(QString, stored);
    Fixture f({Snippet::create(QStringLiteral(";hi"), QStringLiteral("Hello"),
                               Category::defaultCategoryId)});
    SnippetStore& store = f.store;
    ContentView* editor = f.editor;
    editor->setSaveEditsOnLeave(answer.isEmpty());
    editor->setSelectedSnippet(store.snippets().first());
    editor->detailView()->form()->contentEditor()->moveCursor(QTextCursor::End);
    QTest::keyClicks(editor->detailView()->form()->contentEditor(), QStringLiteral("!"));
    std::unique_ptr<AlertDriver> second;
    int questions = 0;
    AlertDriver driver([&](QMessageBox* alert) {
        ++questions;
        if (!answer.isEmpty())
            second = std::make_unique<AlertDriver>([&, answer](QMessageBox* unsaved) {
                ++questions;
                QVERIFY(unsaved->text().contains(QStringLiteral(";hi")));
                for (QAbstractButton* button : unsaved->buttons())
                    if (QString(button->text()).remove(QLatin1Char('&')) == answer)
                        QTest::mouseClick(button, Qt::LeftButton);
            });
        AlertDriver::click(QStringLiteral("Quit"))(alert);
    });
    const bool ended = runLoop([&] { QCoreApplication::quit(); }) == 0;
    QCOMPARE(ended, quits);
    QCOMPARE(questions, answer.isEmpty() ? 1 : 2);
    QCOMPARE(store.snippets().first().content, stored);
}

TYPOLET_ISOLATED_TEST_MAIN(TrayControllerTest)
#include "TrayControllerTest.moc"
