#include "Diagnostics.h"
#include "RecordingKeyboardOutput.h"
#include "ShortcutDataManager.h"
#include "TemporarySettings.h"
#include "TextExpander.h"

#include <QtTest>
#include <memory>

using Call = RecordingKeyboardOutput::Call;

// A store, a recording keyboard and an engine on a clock the test moves by hand.
struct Rig {
    TemporarySettings settings;
    ShortcutDataManager store{settings.path()};
    RecordingKeyboardOutput output;
    double now = 1000;
    TextExpander engine{store, &output, [this] { return now; }};
    QStringList lines;

    Rig() {
        Diagnostics::setTypedEnabled(true);
        Diagnostics::setSink([this](const QString& line) { lines.append(line); });
    }
    ~Rig() { Diagnostics::setSink({}); }

    void add(const QString& command, const QString& content) {
        store.appendShortcut(Shortcut::create(command, content, Category::defaultCategoryId));
    }
    // Types each character as its own key, 0.1 s apart, letting each check run.
    void type(const QString& text) {
        for (const QChar c : text) {
            now += 0.1;
            engine.handleKeyPress(QString(c));
            QCoreApplication::processEvents();
        }
    }
    void key(const QString& character) {
        now += 0.1;
        engine.handleKeyPress(character);
        QCoreApplication::processEvents();
    }
};

class TextExpanderTest : public QObject {
    Q_OBJECT
private slots:
    void expandsACommandWithTheExactLines() {
        Rig rig;
        rig.add(";addr", "1 Main St");
        rig.lines.clear();
        rig.type(";addr");
        QCOMPARE(rig.engine.buffer(), QString());
        QCOMPARE(rig.output.calls, QList<Call>{RecordingKeyboardOutput::deletion(5)});
        QTRY_COMPARE(rig.output.calls.size(), 2);
        QCOMPARE(rig.output.calls.at(1), RecordingKeyboardOutput::insertion("1 Main St"));
        const QStringList expectedTail = {
            "Key pressed: r",
            "Current buffer: ';addr'",
            "🔍 Checking buffer: ';addr'",
            "✅ Match found! ';addr' -> '1 Main St'",
            "⌨️ Inserting text: '1 Main St'",
        };
        QCOMPARE(rig.lines.mid(rig.lines.size() - expectedTail.size()), expectedTail);
        QCOMPARE(rig.lines.first(), "Key pressed: ;");
    }

    void longestCommandWinsAndTiesGoToTheEarlierSnippet() {
        Rig rig;
        rig.add("sig", "short");
        rig.add(";sig", "long");
        rig.add(";sig", "duplicate");
        rig.type("x;sig");
        QCOMPARE(rig.output.calls.value(0), RecordingKeyboardOutput::deletion(4));
        QTRY_COMPARE(rig.output.calls.size(), 2);
        QCOMPARE(rig.output.calls.at(1).text, "long");
    }

    void pausesLongerThanThreeSecondsDropTheBuffer() {
        Rig rig;
        rig.lines.clear();
        rig.now += 3.5; // first key long after the engine started
        rig.key("a");
        QVERIFY(rig.lines.contains("⏰ Buffer timeout - clearing"));
        QCOMPARE(rig.engine.buffer(), "a");
        rig.now += 2.9; // + 0.1 in key(): exactly 3.0 keeps the buffer
        rig.key("b");
        QCOMPARE(rig.engine.buffer(), "ab");
        rig.now += 3.0; // 3.1: dropped
        rig.key("c");
        QCOMPARE(rig.engine.buffer(), "c");
        rig.now -= 100; // a clock that went backwards clears nothing
        rig.key("d");
        QCOMPARE(rig.engine.buffer(), "cd");
    }

    void ignoredKeysKeepTheBufferButResetTheTimer() {
        Rig rig;
        rig.type(";ad");
        rig.lines.clear();
        for (const char16_t code : {u'\r', u'\x1b', u'\x1c', u'\x1f', u'\x10', u'=', u'+', u'^',
                                    u'~', u'|', u'<', u'$', u'`'}) {
            rig.now += 2.0; // each within the timeout of the previous key only
            rig.engine.handleKeyPress(QString(QChar(code)));
        }
        QCOMPARE(rig.engine.buffer(), ";ad");
        QVERIFY(!rig.lines.contains("⏰ Buffer timeout - clearing"));
        rig.key(QString()); // a dead key's first press
        QCOMPARE(rig.lines.last(), "Key pressed: ");
        QCOMPARE(rig.engine.buffer(), ";ad");
        QCOMPARE(rig.lines.filter("Current buffer").size(), 0);
        QVERIFY(rig.output.calls.isEmpty());
    }

    void acceptsSpacesTabsLettersMarksNumbersAndPunctuation() {
        for (const QString& accepted : {QString(" "), QString("\t"), u"\u00a0"_qs,
                                        QString("a"), u"ß"_qs, u"\u0301"_qs,
                                        QString("7"), u"\u2167"_qs, QString(";"),
                                        u"\u00bf"_qs, u"\U0001D400"_qs})
            QVERIFY2(TextExpander::isAccepted(accepted), qPrintable(accepted));
        for (const QString& ignored :
             {QString(), QString("\n"), QString("\r"), u"\u20ac"_qs, QString("="),
              u"\U0001F642"_qs, QString(QChar(0xD83D))})
            QVERIFY2(!TextExpander::isAccepted(ignored), qPrintable(ignored));
    }

    void backspaceRemovesWholeCharacters() {
        Rig rig;
        rig.lines.clear();
        rig.key(QString(QChar(0x08)));
        rig.key(QString(QChar(0x7F)));
        QVERIFY(rig.lines.filter("Backspace").isEmpty()); // empty buffer: silent
        rig.type("xe");
        rig.key(u"\u0301"_qs); // a combining accent typed as its own key joins the e
        QCOMPARE(rig.engine.buffer(), u"xe\u0301");
        rig.key(QString(QChar(0x08)));
        QCOMPARE(rig.engine.buffer(), "x");
        QCOMPARE(rig.lines.last(), "🔙 Backspace - Buffer now: 'x'");
        rig.key(QString(QChar(0x7F)));
        QCOMPARE(rig.engine.buffer(), QString());
    }

    void commandsMatchCaseSensitivelyAndUpToCanonicalEquivalence() {
        Rig rig;
        rig.add(";Sig", "upper");
        rig.add(u";caf\u00e9"_qs, "precomposed");
        rig.type(";sig");
        QCoreApplication::processEvents();
        QVERIFY(rig.output.calls.isEmpty());
        rig.type(";cafe");
        rig.key(u"\u0301"_qs); // typed decomposed, stored precomposed
        QCOMPARE(rig.output.calls.value(0), RecordingKeyboardOutput::deletion(5));
        QTRY_COMPARE(rig.output.calls.size(), 2);
        QCOMPARE(rig.output.calls.at(1).text, "precomposed");
    }

    void aCommandMayEndWithASpace() {
        Rig rig;
        rig.add("btw ", "by the way ");
        rig.type("so btw");
        QVERIFY(rig.output.calls.isEmpty());
        rig.type(" ");
        QCOMPARE(rig.output.calls.value(0), RecordingKeyboardOutput::deletion(4));
    }

    void emptyCommandMatchesWhenNothingLongerDoes() {
        Rig rig;
        rig.add("", "always");
        rig.add(";x", "x");
        rig.type("a");
        QCOMPARE(rig.output.calls.value(0), RecordingKeyboardOutput::deletion(0));
        QCOMPARE(rig.engine.buffer(), QString());
        QTRY_COMPARE(rig.output.calls.size(), 2);
        QCOMPARE(rig.output.calls.at(1), RecordingKeyboardOutput::insertion("always"));
        // ';' alone already matches the empty command, so ';x' never stands in the buffer.
        rig.type(";x");
        QTRY_COMPARE(rig.output.calls.size(), 6);
        QList<int> erased;
        for (const Call& call : std::as_const(rig.output.calls))
            if (call.kind == Call::Delete)
                erased.append(call.count);
        QCOMPARE(erased, QList<int>({0, 0, 0}));
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
        QVERIFY(rig.output.calls.isEmpty());
        // Appended directly, not yet saved: the very next key must see it.
        rig.add(";bc", "appended");
        rig.type("c");
        QCOMPARE(rig.output.calls.value(0), RecordingKeyboardOutput::deletion(3));
        rig.store.updateShortcut(rig.store.shortcuts().at(0), ";q", "renamed");
        rig.type(";a");
        QCOMPARE(rig.output.calls.size(), 1);
        rig.type(";q");
        QCOMPARE(rig.output.calls.size(), 2);
        QCOMPARE(rig.output.calls.at(1), RecordingKeyboardOutput::deletion(2));
    }

    void theMatchedSnippetIsTypedEvenIfDeletedMeanwhile() {
        Rig rig;
        rig.add(";a", "still typed");
        rig.type(";a");
        rig.store.removeShortcut(rig.store.shortcuts().at(0).id);
        rig.store.saveShortcuts();
        QTRY_COMPARE(rig.output.calls.size(), 2);
        QCOMPARE(rig.output.calls.at(1).text, "still typed");
    }

    void typedKeysAreNotLoggedUnlessAskedFor() {
        Rig rig;
        Diagnostics::setTypedEnabled(false);
        rig.add(";a", "secret");
        rig.lines.clear();
        rig.now += 5;
        rig.type(";a");
        rig.key(QString(QChar(0x08)));
        QTRY_COMPARE(rig.output.calls.size(), 2);
        QCOMPARE(rig.lines, QStringList());
    }

    void aHugeContentIsTypedWhole() {
        Rig rig;
        const QString content(1024 * 1024, QChar('z'));
        rig.add(";big", content);
        rig.type(";big");
        QTRY_COMPARE(rig.output.calls.size(), 2);
        QCOMPARE(rig.output.calls.at(1).text.size(), content.size());
    }
};

QTEST_GUILESS_MAIN(TextExpanderTest)
#include "TextExpanderTest.moc"
