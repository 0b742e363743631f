// Snippets that adapt, typed into real X clients: the content follows the case the command was
// typed in (a GTK text view), and a category limited to one window class expands there and not
// in another client whose WM_CLASS differs.
#include "RecordCodec.h"
#include "X11FocusedApplication.h"
#include "XSession.h"

#include <QDir>
#include <QSettings>
#include <QtTest>

class CaseAndApplicationE2eTest : public QObject {
    Q_OBJECT

    static bool type(XSession& session, const QString& text) {
        return session.run("xdotool", {"type", "--delay", "15", text});
    }
    static void writeLibrary(const XSession& session, const QList<Category>& categories,
                             const QList<Snippet>& snippets) {
        QDir().mkpath(session.file("Typolet"));
        QSettings settings(session.file("Typolet/Typolet.conf"), QSettings::NativeFormat);
        settings.setValue("Categories", *RecordCodec::encodeCategories(categories));
        settings.setValue("Shortcuts", *RecordCodec::encodeSnippets(snippets));
        settings.sync();
    }
    static void expectFile(XSession& session, const QString& path, const QString& expected,
                           bool afterErasing) {
        QString actual;
        XSession::waitFor([&] {
            const QString raw = XSession::readText(path);
            actual = afterErasing ? XSession::afterErasing(raw.toUtf8()) : raw;
            return actual == expected;
        }, 30000);
        QVERIFY2(actual == expected, qPrintable(XSession::describeDifference(actual, expected) +
                                                "\nTypolet: " + session.typoletOutput().right(1500)));
    }
    static bool focus(XSession& session, const QString& window) {
        return session.run("xdotool", {"windowfocus", "--sync", window});
    }

private slots:
    void theContentFollowsTheTypedCase() {
        XSession session;
        QVERIFY2(session.isRunning(), qPrintable(session.log()));
        Snippet sig = Snippet::create(";sig", "best regards", Category::defaultCategoryId);
        sig.matchCase = true;
        writeLibrary(session, {Category::defaultCategory()}, {sig});
        QVERIFY2(session.startTypolet(), qPrintable(session.log()));
        const QString out = session.file("gtk-out");
        QVERIFY2(session.startGtkTextView({"--out", out}), qPrintable(session.log()));
        QVERIFY(XSession::waitFor([&] { return QFile::exists(out); }));
        QVERIFY(session.focusTarget());
        // One command at a time: xdotool types through Typolet's own XTEST keyboard, whose keys
        // cannot be held while an expansion runs.
        QVERIFY(type(session, ";sig"));
        QVERIFY(session.waitForExpansions(1));
        QVERIFY(type(session, " ;Sig"));
        QVERIFY(session.waitForExpansions(2));
        QVERIFY(type(session, " ;SIG"));
        QVERIFY(session.waitForExpansions(3));
        QVERIFY(type(session, "."));
        expectFile(session, out, "best regards Best regards BEST REGARDS.", false);
    }

    void aLimitedCategoryExpandsOnlyInItsApplications() {
        XSession session;
        QVERIFY2(session.isRunning(), qPrintable(session.log()));
        Category notes = Category::create("Notes");
        notes.limit = {Category::Limit::Kind::onlyIn, {"TypoletNotes"}};
        Category elsewhere = Category::create("Elsewhere");
        elsewhere.limit = {Category::Limit::Kind::exceptIn, {"TypoletNotes"}};
        writeLibrary(session, {Category::defaultCategory(), notes, elsewhere},
                     {Snippet::create(";w", "from notes", notes.id),
                      Snippet::create(";n", "notes only", notes.id),
                      Snippet::create(";w", "elsewhere", elsewhere.id)});
        QVERIFY2(session.startTypolet(), qPrintable(session.log()));
        const QString notesOut = session.file("notes-out");
        QVERIFY2(session.startGtkTextView({"--out", notesOut, "--wm-class", "TypoletNotes"}),
                 qPrintable(session.log()));
        const QString notesWindow = session.targetWindow();
        QVERIFY(XSession::waitFor([&] { return QFile::exists(notesOut); }));
        const QString termOut = session.file("term-out");
        QVERIFY2(session.startTerminal(termOut, "OtherTerm"), qPrintable(session.log()));
        const QString termWindow = session.targetWindow();
        // Both are offered to a category's form by their class (no window manager runs here:
        // the windows shown on the screen).
        qputenv("DISPLAY", session.display().toLocal8Bit());
        X11FocusedApplication openWindows;
        const QStringList classes = openWindows.windowClasses();
        QVERIFY2(classes.contains("TypoletNotes") && classes.contains("OtherTerm"),
                 qPrintable(classes.join(", ")));

        QVERIFY(focus(session, notesWindow));
        QVERIFY(type(session, ";w"));
        QVERIFY(session.waitForExpansions(1));
        QVERIFY(type(session, " ;n"));
        QVERIFY(session.waitForExpansions(2));
        QVERIFY(type(session, " "));
        expectFile(session, notesOut, "from notes notes only ", false);

        QVERIFY(focus(session, termWindow));
        QVERIFY(type(session, ";w"));
        QVERIFY(session.waitForExpansions(3));
        QVERIFY(type(session, " ;n "));
        expectFile(session, termOut, "elsewhere ;n ", true);
        QCOMPARE(session.typoletOutput().count("Match found"), 3);
    }
};

QTEST_GUILESS_MAIN(CaseAndApplicationE2eTest)
#include "CaseAndApplicationE2eTest.moc"
