// Under a real window manager (openbox, which reparents every window into a frame of its own
// and lists the windows it manages in the root's _NET_CLIENT_LIST): the category forms are
// offered the classes of the open windows from that list, and a category limited to one class
// expands in a window of that class and not in a window of another.
#include "RecordCodec.h"
#include "X11FocusedApplication.h"
#include "XSession.h"

#include <QDir>
#include <QSettings>
#include <QtTest>

class WindowManagerE2eTest : public QObject {
    Q_OBJECT

    static bool type(XSession& session, const QString& text) {
        return session.run("xdotool", {"type", "--delay", "15", text});
    }
    static void expectFile(XSession& session, const QString& path, const QString& expected) {
        QString actual;
        XSession::waitFor([&] { return (actual = XSession::readText(path)) == expected; }, 30000);
        QVERIFY2(actual == expected,
                 qPrintable(XSession::describeDifference(actual, expected) +
                            "\nTypolet: " + session.typoletOutput().right(1500)));
    }
    // A GTK text view of its own class; its X window, or empty.
    static QString startView(XSession& session, const QString& windowClass, const QString& out) {
        if (!session.startGtkTextView({"--out", out, "--wm-class", windowClass}) ||
            !XSession::waitFor([&] { return QFile::exists(out); }))
            return {};
        return session.targetWindow();
    }
    // Whether the window manager has put `window` into a frame of its own.
    static bool reparented(XSession& session, const QString& window) {
        const QString tree = session.output("xwininfo", {"-children", "-id", window});
        const QString parent = tree.section("Parent window id:", 1).section('\n', 0, 0);
        return !parent.isEmpty() && !parent.contains("the root window");
    }

private slots:
    void classesAndLimitsUnderAWindowManager() {
        XSession session;
        QVERIFY2(session.isRunning(), qPrintable(session.log()));
        QProcess* manager = session.start("openbox", {"--sm-disable"});
        QVERIFY2(manager->state() != QProcess::NotRunning,
                 "openbox did not start; scripts/bootstrap installs it");
        QVERIFY2(XSession::waitFor([&] {
                     return session.output("xprop", {"-root", "_NET_SUPPORTING_WM_CHECK"})
                         .contains("window id");
                 }),
                 qPrintable(QString::fromLocal8Bit(manager->readAllStandardError())));

        Category notes = Category::create("Notes");
        notes.limit = {Category::Limit::Kind::onlyIn, {"TypoletNotes"}};
        QDir().mkpath(session.file("Typolet"));
        {
            QSettings settings(session.file("Typolet/Typolet.conf"), QSettings::NativeFormat);
            settings.setValue("Categories",
                              *RecordCodec::encodeCategories({Category::defaultCategory(), notes}));
            settings.setValue("Shortcuts", *RecordCodec::encodeSnippets(
                                               {Snippet::create(";n", "notes only", notes.id)}));
        }
        QVERIFY2(session.startTypolet(), qPrintable(session.log()));
        const QString notesOut = session.file("notes-out"), otherOut = session.file("other-out");
        const QString notesWindow = startView(session, "TypoletNotes", notesOut);
        const QString otherWindow = startView(session, "OtherNotes", otherOut);
        QVERIFY2(!notesWindow.isEmpty() && !otherWindow.isEmpty(), qPrintable(session.log()));
        QVERIFY(XSession::waitFor(
            [&] { return reparented(session, notesWindow) && reparented(session, otherWindow); }));

        // The screen's top-level windows are the manager's frames now, which have no class:
        // the classes come from the manager's list of clients.
        qputenv("DISPLAY", session.display().toLocal8Bit());
        X11FocusedApplication openWindows;
        const QStringList classes = openWindows.windowClasses();
        QVERIFY2(classes.contains("TypoletNotes") && classes.contains("OtherNotes"),
                 qPrintable(classes.join(", ")));

        QVERIFY(session.run("xdotool", {"windowactivate", "--sync", notesWindow}));
        QVERIFY(type(session, ";n"));
        QVERIFY(session.waitForExpansions(1));
        QVERIFY(type(session, " "));
        expectFile(session, notesOut, "notes only ");

        QVERIFY(session.run("xdotool", {"windowactivate", "--sync", otherWindow}));
        QVERIFY(type(session, ";n "));
        expectFile(session, otherOut, ";n ");
        QCOMPARE(session.typoletOutput().count("Match found"), 1);
    }
};

QTEST_GUILESS_MAIN(WindowManagerE2eTest)
#include "WindowManagerE2eTest.moc"
