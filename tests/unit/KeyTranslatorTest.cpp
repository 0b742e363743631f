// Key translation on real layouts compiled from xkb-data, without a display.
#include "CapturedDiagnostics.h"
#include "CompiledKeymapSource.h"
#include "KeyTranslator.h"

#include <QtTest>

namespace {
// evdev keycodes (X keycodes) of the keys used below, named by their US engraving.
constexpr uint32_t keyEscape = 9, key1 = 10, key2 = 11, keyBackSpace = 22, keyTab = 23,
                   keyQ = 24, keyE = 26, keyY = 29, keyReturn = 36, keyA = 38, keySemicolon = 47,
                   keyApostrophe = 48, keyShiftL = 50, keyZ = 52, keyF1 = 67, keyF12 = 96,
                   keyKpEnter = 104, keyAltGr = 108, keyUp = 111, keyLeft = 113, keyRight = 114,
                   keyDown = 116, keyDelete = 119, keyCapsLock = 66, keyControlL = 37;

QString text(KeyTranslator& translator, uint32_t keyCode, uint32_t& state) {
    const auto result = translator.translateKeyCode(keyCode, state);
    return result ? *result : QStringLiteral("<failed>");
}
QString text(KeyTranslator& translator, uint32_t keyCode) {
    uint32_t state = 0;
    return text(translator, keyCode, state);
}
} // namespace

class KeyTranslatorTest : public QObject {
    Q_OBJECT

private slots:
    void keysGiveTheirPlainCharacterOnEachLayout_data() {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<QString>("variant");
        QTest::addColumn<uint32_t>("keyCode");
        QTest::addColumn<QString>("expected");
        // The plain level even where Shift gives something else on that key.
        QTest::newRow("us a") << "us" << "" << keyA << "a";
        QTest::newRow("us 1 (Shift gives !)") << "us" << "" << key1 << "1";
        QTest::newRow("us semicolon (Shift gives :)") << "us" << "" << keySemicolon << ";";
        QTest::newRow("de y position gives z") << "de" << "" << keyY << "z";
        QTest::newRow("de z position gives y") << "de" << "" << keyZ << "y";
        QTest::newRow("fr q position gives a") << "fr" << "" << keyQ << "a";
        QTest::newRow("fr a position gives q") << "fr" << "" << keyA << "q";
        QTest::newRow("fr 1 gives & (Shift gives 1)") << "fr" << "" << key1 << "&";
        QTest::newRow("fr 2 gives é") << "fr" << "" << key2 << "é";
        QTest::newRow("us intl e") << "us" << "intl" << keyE << "e";
    }
    void keysGiveTheirPlainCharacterOnEachLayout() {
        QFETCH(QString, layout);
        QFETCH(QString, variant);
        QFETCH(uint32_t, keyCode);
        QFETCH(QString, expected);
        CompiledKeymapSource source(layout, variant);
        QVERIFY(source.currentKeymap());
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        QCOMPARE(text(translator, keyCode), expected);
    }

    void editingAndNavigationKeysGiveFixedTexts_data() {
        QTest::addColumn<uint32_t>("keyCode");
        QTest::addColumn<QString>("expected");
        QTest::newRow("BackSpace") << keyBackSpace << QString(QChar(0x08));
        QTest::newRow("Delete") << keyDelete << QString(QChar(0x7F));
        QTest::newRow("Return") << keyReturn << QString(QChar(0x0D));
        QTest::newRow("KP_Enter") << keyKpEnter << QString(QChar(0x0D));
        QTest::newRow("Tab") << keyTab << QString(QChar(0x09));
        QTest::newRow("Escape") << keyEscape << QString(QChar(0x1B));
        QTest::newRow("Left") << keyLeft << QString(QChar(0x1C));
        QTest::newRow("Right") << keyRight << QString(QChar(0x1D));
        QTest::newRow("Up") << keyUp << QString(QChar(0x1E));
        QTest::newRow("Down") << keyDown << QString(QChar(0x1F));
        QTest::newRow("F1") << keyF1 << QString(QChar(0x10));
        QTest::newRow("F12") << keyF12 << QString(QChar(0x10));
    }
    void editingAndNavigationKeysGiveFixedTexts() {
        QFETCH(uint32_t, keyCode);
        QFETCH(QString, expected);
        for (const char* layout : {"us", "de", "fr"}) {
            CompiledKeymapSource source(QString::fromLatin1(layout));
            KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
            QCOMPARE(text(translator, keyCode), expected);
        }
    }

    void deadAcuteThenEComposes() {
        CompiledKeymapSource source(QStringLiteral("us"), QStringLiteral("intl"));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        QVERIFY(translator.hasComposeTable());
        uint32_t state = 0;
        QCOMPARE(text(translator, keyApostrophe, state), QString());
        QVERIFY(state != 0);
        QCOMPARE(text(translator, keyE, state), QStringLiteral("é"));
        QCOMPARE(state, 0u);
        // The sequence is over: the next e is plain again.
        QCOMPARE(text(translator, keyE, state), QStringLiteral("e"));
    }

    void localeWithoutComposeTableStillComposes() {
        CompiledKeymapSource source(QStringLiteral("us"), QStringLiteral("intl"));
        KeyTranslator translator(source, QStringLiteral("xx_NOWHERE.UTF-8"));
        QVERIFY(translator.hasComposeTable());
        uint32_t state = 0;
        text(translator, keyApostrophe, state);
        QCOMPARE(text(translator, keyE, state), QStringLiteral("é"));
    }

    void deadKeyFollowedByAKeyItCannotComposeWithGivesThatKey() {
        CompiledKeymapSource source(QStringLiteral("us"), QStringLiteral("intl"));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        uint32_t state = 0;
        text(translator, keyApostrophe, state);
        QCOMPARE(text(translator, keyQ, state), QStringLiteral("q"));
        QCOMPARE(state, 0u);
    }

    void backspaceEndsAPendingDeadKey() {
        CompiledKeymapSource source(QStringLiteral("us"), QStringLiteral("intl"));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        uint32_t state = 0;
        text(translator, keyApostrophe, state);
        QCOMPARE(text(translator, keyBackSpace, state), QString(QChar(0x08)));
        QCOMPARE(state, 0u);
        QCOMPARE(text(translator, keyE, state), QStringLiteral("e"));
    }

    void clearedDeadKeyStateEndsTheSequence() {
        CompiledKeymapSource source(QStringLiteral("us"), QStringLiteral("intl"));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        uint32_t state = 0;
        text(translator, keyApostrophe, state);
        state = 0; // whoever owns the state word ended the sequence
        QCOMPARE(text(translator, keyE, state), QStringLiteral("e"));
    }

    void groupSwitchBetweenTwoKeysChangesTheSecond() {
        CompiledKeymapSource source(QStringLiteral("us,de"));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        QCOMPARE(text(translator, keyY), QStringLiteral("y"));
        source.setGroup(1);
        QCOMPARE(text(translator, keyY), QStringLiteral("z"));
        source.setGroup(0);
        QCOMPARE(text(translator, keyY), QStringLiteral("y"));
    }

    void newKeymapIsUsedFromTheNextKey() {
        CompiledKeymapSource source(QStringLiteral("us"));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        QCOMPARE(text(translator, keyQ), QStringLiteral("q"));
        QVERIFY(source.load(QStringLiteral("fr")));
        QCOMPARE(text(translator, keyQ), QStringLiteral("a"));
    }

    void modifierKeysAreRecognised() {
        CompiledKeymapSource source(QStringLiteral("us"), QStringLiteral("intl"));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        for (const uint32_t key : {keyShiftL, keyControlL, keyCapsLock, keyAltGr})
            QVERIFY2(translator.isModifierKey(key), qPrintable(QString::number(key)));
        for (const uint32_t key : {keyA, keyApostrophe, keyReturn, keyBackSpace, keyF1})
            QVERIFY2(!translator.isModifierKey(key), qPrintable(QString::number(key)));
    }

    void linesSayWhatWasTranslated() {
        CompiledKeymapSource source(QStringLiteral("us"));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        CapturedDiagnostics diagnostics;
        text(translator, keyA);
        QCOMPARE(diagnostics.lines,
                 QStringList({QStringLiteral("✅ Got keyboard layout"),
                              QStringLiteral("📝 Translated char: a")}));
    }

    void missingKeymapFails() {
        CompiledKeymapSource source(QStringLiteral("us"));
        source.unload();
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        CapturedDiagnostics diagnostics;
        uint32_t state = 0;
        QVERIFY(!translator.translateKeyCode(keyA, state));
        QCOMPARE(diagnostics.lines, QStringList{QStringLiteral("❌ Failed to get keyboard layout")});
    }

    void keysymOfASurrogateCannotBeConverted() {
        CompiledKeymapSource source;
        QVERIFY(source.loadText(QStringLiteral(R"(xkb_keymap {
            xkb_keycodes { minimum = 8; maximum = 20; <K1> = 10; <K2> = 11; };
            xkb_types { include "basic" };
            xkb_compat { include "basic" };
            xkb_symbols { key <K1> { [ UD800 ] }; key <K2> { [ x ] }; };
        };)")));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        CapturedDiagnostics diagnostics;
        uint32_t state = 0;
        QVERIFY(!translator.translateKeyCode(10, state));
        QCOMPARE(diagnostics.lines.last(), QStringLiteral("❌ Failed to convert char"));
        QCOMPARE(text(translator, 11), QStringLiteral("x"));
    }

    void keyWithoutSymbolGivesEmptyText() {
        CompiledKeymapSource source(QStringLiteral("us"));
        KeyTranslator translator(source, QStringLiteral("en_US.UTF-8"));
        QCOMPARE(text(translator, 8), QString()); // keycode 8 carries nothing in evdev
    }
};

QTEST_GUILESS_MAIN(KeyTranslatorTest)
#include "KeyTranslatorTest.moc"
