// The engine: matching keys typed by hand on a clock the test moves, then listening over fake
// platform pieces (its start, the lines of each key, and its own typing never coming back).
#include "TextExpander.h"
#include "CapturedDiagnostics.h"
#include "CompiledKeymapSource.h"
#include "Diagnostics.h"
#include "FakeKeyMonitor.h"
#include "FakePermissionProbe.h"
#include "KeyTranslator.h"
#include "LoopbackKeyboardOutput.h"
#include "NotificationCenter.h"
#include "ShortcutDataManager.h"
#include "TemporarySettings.h"

#include <QtTest>

using Output = RecordingKeyboardOutput;
using Calls = QList<Output::Call>;

namespace {
constexpr uint32_t keyA = 38, keyS = 39, keySemicolon = 47, keyBackSpace = 22, keyShiftL = 50,
                   keyApostrophe = 48, keyE = 26;

Calls expansion(int erased, const QString& content) {
    return {Output::deletion(erased), Output::insertion(content)};
}

// A store, a recording keyboard and an engine that only matches, on a clock the test moves.
struct Rig {
    TemporarySettings settings;
    ShortcutDataManager store{settings.path()};
    Output output;
    double now = 1000;
    TextExpander engine{store, &output, [this] { return now; }};
    CapturedDiagnostics diagnostics;
    QStringList& lines = diagnostics.lines;

    void add(const QString& command, const QString& content) {
        store.appendShortcut(Shortcut::create(command, content, Category::defaultCategoryId));
    }
    // One key 0.1 s after the previous, letting its check run.
    void key(const QString& character) {
        now += 0.1;
        engine.handleKeyPress(character);
        QCoreApplication::processEvents();
    }
    void type(const QString& text) {
        for (const QChar c : text)
            key(QString(c));
    }
};

// The same store with a listening engine over fake platform pieces, created by start().
struct Listening {
    TemporarySettings settings;
    ShortcutDataManager store{settings.path()};
    CompiledKeymapSource keymaps{QStringLiteral("us"), QStringLiteral("intl")};
    KeyTranslator translator{keymaps, QStringLiteral("en_US.UTF-8")};
    FakePermissionProbe permissions{true, true};
    FakeKeyMonitor monitor;
    // Echoes what it types back to the monitor, as the system does.
    LoopbackKeyboardOutput output{
        monitor, {{u'a', keyA}, {u's', keyS}, {u';', keySemicolon}, {u'e', keyE}}, keyBackSpace};
    CapturedDiagnostics diagnostics;
    std::optional<TextExpander> engine;

    explicit Listening(bool monitorStarts = true) : monitor(monitorStarts) {}
    TextExpander& start() {
        return engine.emplace(store, EnginePlatform{&permissions, &monitor, &translator, &output});
    }
};
} // namespace

class TextExpanderTest : public QObject {
    Q_OBJECT
private slots:
    void expandsTheLongestEarliestCommandWithTheExactLines() {
        Rig rig;
        rig.add("dr", "short");
        rig.add(";addr", "1 Main St");
        rig.add(";addr", "duplicate");
        rig.type("x;addr");
        QCOMPARE(rig.engine.buffer(), QString());
        QCOMPARE(rig.output.calls, Calls{Output::deletion(5)}); // the content comes 50 ms later
        QTRY_COMPARE(rig.output.calls, expansion(5, "1 Main St"));
        const QStringList expectedTail = {
            "Key pressed: r", "Current buffer: 'x;addr'", "🔍 Checking buffer: 'x;addr'",
            "✅ Match found! ';addr' -> '1 Main St'", "⌨️ Inserting text: '1 Main St'"};
        QCOMPARE(rig.lines.mid(rig.lines.size() - expectedTail.size()), expectedTail);
        QCOMPARE(rig.lines.first(), "Key pressed: x");
    }

    void pausesOverThreeSecondsDropTheBufferAndIgnoredKeysResetTheTimer() {
        Rig rig;
        rig.now += 3.5; // first key long after the engine started
        rig.key("a");
        QCOMPARE(rig.lines.value(1), "⏰ Buffer timeout - clearing");
        QCOMPARE(rig.engine.buffer(), "a");
        rig.now += 2.9; // + 0.1 in key(): exactly 3.0 keeps the buffer
        rig.key("b");
        QCOMPARE(rig.engine.buffer(), "ab");
        rig.now += 3.0;
        rig.key("c");
        QCOMPARE(rig.engine.buffer(), "c");
        rig.now -= 100; // a clock that went backwards clears nothing
        rig.key("d");
        QCOMPARE(rig.engine.buffer(), "cd");

        // Return, Escape, arrows, F keys and symbols are ignored but reset the timer.
        rig.lines.clear();
        for (const char16_t code : {u'\r', u'\x1b', u'\x1c', u'\x1f', u'\x10', u'=', u'$', u'`'}) {
            rig.now += 2.0;
            rig.engine.handleKeyPress(QString(QChar(code)));
        }
        rig.key(QString()); // a dead key's first press
        QCOMPARE(rig.lines.last(), "Key pressed: ");
        QCOMPARE(rig.engine.buffer(), "cd");
        QVERIFY(!rig.lines.contains("⏰ Buffer timeout - clearing"));
        QCOMPARE(rig.lines.filter("Current buffer").size(), 0);
        QVERIFY(rig.output.calls.isEmpty());
    }

    void acceptsSpacesTabsLettersMarksNumbersAndPunctuation() {
        for (const QString& accepted :
             {QString(" "), QString("\t"), u"\u00a0"_qs, QString("a"), u"ß"_qs, u"\u0301"_qs,
              QString("7"), u"\u2167"_qs, QString(";"), u"\u00bf"_qs, u"\U0001D400"_qs})
            QVERIFY2(TextExpander::isAccepted(accepted), qPrintable(accepted));
        for (const QString& ignored : {QString(), QString("\n"), QString("\r"), u"\u20ac"_qs,
                                       QString("="), u"\U0001F642"_qs, QString(QChar(0xD83D))})
            QVERIFY2(!TextExpander::isAccepted(ignored), qPrintable(ignored));
    }

    void backspaceRemovesWholeCharacters() {
        Rig rig;
        rig.key(QString(QChar(0x08)));
        rig.key(QString(QChar(0x7F)));
        QVERIFY(rig.lines.filter("Backspace").isEmpty()); // empty buffer: silent
        rig.type("xe");
        rig.key(u"\u0301"_qs); // a combining accent typed as its own key joins the e
        QCOMPARE(rig.engine.buffer(), u"xe\u0301");
        rig.key(QString(QChar(0x08)));
        QCOMPARE(rig.lines.last(), "🔙 Backspace - Buffer now: 'x'");
        rig.key(QString(QChar(0x7F)));
        QCOMPARE(rig.engine.buffer(), QString());
    }

    void commandsMatchCaseSensitivelyAndUpToCanonicalEquivalence() {
        Rig rig;
        rig.add(";Sig", "upper");
        rig.add(u";caf\u00e9"_qs, "precomposed");
        rig.add("btw ", "by the way"); // expands when the space is typed
        rig.type(";sig so btw");
        QVERIFY(rig.output.calls.isEmpty());
        rig.type(" ");
        QTRY_COMPARE(rig.output.calls, expansion(4, "by the way"));
        rig.type(";cafe");
        rig.key(u"\u0301"_qs); // typed decomposed, stored precomposed
        QTRY_COMPARE(rig.output.calls.mid(2), expansion(5, "precomposed"));
    }

    void anEmptyCommandMatchesAnyText() {
        Rig rig;
        rig.add("", "always");
        rig.type("a");
        QCOMPARE(rig.engine.buffer(), QString());
        QTRY_COMPARE(rig.output.calls, expansion(0, "always"));
    }

    void theCheckSeesTheBufferAsItIsWhenItRuns() {
        Rig rig;
        rig.add(";a", "A");
        rig.now += 0.1;
        rig.engine.handleKeyPress(";");
        rig.engine.handleKeyPress("a");
        rig.engine.handleKeyPress("b"); // arrives before the queued checks run
        QCoreApplication::processEvents();
        QVERIFY(rig.output.calls.isEmpty());
        QCOMPARE(rig.engine.buffer(), ";ab");
    }

    void storeEditsTakeEffectAtTheNextKey() {
        Rig rig;
        rig.add(";a", "first");
        rig.type(";b");
        rig.add(";bc", "appended"); // not saved: the very next key must still see it
        rig.type("c");
        QTRY_COMPARE(rig.output.calls, expansion(3, "appended"));
        rig.store.updateShortcut(rig.store.shortcuts().at(0), ";q", "renamed");
        rig.type(";a");
        QCOMPARE(rig.output.calls.size(), 2);
        rig.type(";q");
        QCOMPARE(rig.output.calls.value(2), Output::deletion(2));
        // Deleted during the delay, the matched snippet is typed all the same.
        rig.store.removeShortcut(rig.store.shortcuts().at(0).id);
        rig.store.saveShortcuts();
        QTRY_COMPARE(rig.output.calls.mid(2), expansion(2, "renamed"));
    }

    void aHugeSecretIsTypedWholeAndNotLoggedUnlessAskedFor() {
        Rig rig;
        Diagnostics::setTypedEnabled(false);
        const QString content(1024 * 1024, QChar('z'));
        rig.add(";big", content);
        rig.now += 5;
        rig.type(";bx");
        rig.key(QString(QChar(0x08)));
        rig.type("ig");
        QTRY_COMPARE(rig.output.calls.size(), 2);
        QVERIFY(rig.output.calls.at(1).text == content);
        QCOMPARE(rig.lines, QStringList());
    }

    void withoutAPieceNothingIsWatched() {
        const struct {
            bool observe, post, monitorStarts;
            QString line;
            int postQuestions;
        } cases[] = {{false, true, true, "Need input monitoring permissions", 0},
                     {true, false, true, "Need accessibility permissions", 1},
                     {true, true, false, "Failed to create event tap", 1}};
        for (const auto& c : cases) {
            Listening rig(c.monitorStarts);
            rig.permissions.observeGranted = c.observe;
            rig.permissions.postGranted = c.post;
            QVERIFY(!rig.start().isMonitoring());
            QCOMPARE(rig.diagnostics.lines, QStringList{c.line});
            QCOMPARE(rig.permissions.postQuestions, c.postQuestions);
            QCOMPARE(rig.monitor.startCalls, c.observe && c.post ? 1 : 0);
        }
    }

    void eachKeyWritesItsLinesAndDeadKeysCompose() {
        Listening rig;
        TextExpander& engine = rig.start();
        QVERIFY(engine.isMonitoring());
        rig.monitor.press(keyShiftL); // modifiers alone are not typing: no line at all
        rig.monitor.press(keyA);
        QCOMPARE(rig.diagnostics.lines,
                 QStringList({"Event received: 10", "🔑 KeyCode: 38", "✅ Got keyboard layout",
                              "📝 Translated char: a", "Key pressed: a", "Current buffer: 'a'"}));
        rig.monitor.press(keyApostrophe);
        QVERIFY(engine.deadKeyState != 0);
        rig.monitor.press(keyE);
        QCOMPARE(engine.buffer(), "aé");
        QCOMPARE(engine.deadKeyState, 0u);
    }

    void shortcutsUpdatedWritesHowManyWereLoaded() {
        Listening rig;
        rig.start();
        Diagnostics::setTypedEnabled(false); // these lines are written in any case
        const QList<Shortcut> three{Shortcut::create(";a", "A", {}),
                                    Shortcut::create(";b", "B", {}),
                                    Shortcut::create(";c", "C", {})};
        auto& center = NotificationCenter::defaultCenter();
        center.post("ShortcutsUpdated", {{"shortcuts", QVariant::fromValue(three)}});
        center.post("ShortcutsUpdated");
        center.post("ShortcutsUpdated", {{"shortcuts", "three"}});
        const QString reloading = "🔄 Shortcuts updated, reloading data...";
        QCOMPARE(rig.diagnostics.lines,
                 QStringList({reloading, "📝 Loaded 3 shortcuts", reloading, reloading}));
    }

    void typedContentNeverComesBackButBackspacesMay() {
        Listening rig;
        rig.store.appendShortcut(Shortcut::create(";as", "sea;as", {}));
        TextExpander& engine = rig.start();
        for (const uint32_t key : {keySemicolon, keyA, keyS})
            rig.monitor.press(key);
        // The content ends with the command again: read back, it would expand forever.
        QTRY_COMPARE(rig.output.calls, expansion(3, "sea;as"));
        QCOMPARE(rig.monitor.discarded,
                 QList<uint32_t>({keyS, keyE, keyA, keySemicolon, keyA, keyS}));
        QCoreApplication::processEvents();
        QCOMPARE(rig.diagnostics.lines.count("Key pressed: \b"), 3);
        QCOMPARE(rig.diagnostics.lines.filter("✅ Match found!").size(), 1);
        QCOMPARE(engine.buffer(), QString());
    }
};

QTEST_GUILESS_MAIN(TextExpanderTest)
#include "TextExpanderTest.moc"
