// Key translation on real layouts compiled from xkb-data, without a display.
#include "KeyTranslator.h"
#include "CapturedDiagnostics.h"
#include "CompiledKeymapSource.h"

#include <QtTest>

namespace {
// X keycodes of the keys used below, named by their US engraving.
constexpr uint32_t key1 = 10, key2 = 11, keyBackSpace = 22, keyQ = 24, keyE = 26, keyY = 29,
                   keyReturn = 36, keyA = 38, keySemicolon = 47, keyApostrophe = 48, keyShiftL = 50,
                   keyZ = 52, keyF1 = 67, keyAltGr = 108, keyCapsLock = 66, keyControlL = 37;

// A layout, a translator reading it and the dead-key state word the engine would keep.
struct Keyboard {
    CompiledKeymapSource source;
    KeyTranslator translator;
    uint32_t state = 0;
    KeyboardState modifiers;
    explicit Keyboard(const QString& layout, const QString& variant = {},
                      const QString& locale = QStringLiteral("en_US.UTF-8"))
        : source(layout, variant), translator(source, locale) {}
    QString type(uint32_t keyCode) {
        const auto text = translator.translateKeyCode(keyCode, modifiers, state);
        return text ? *text : QStringLiteral("<failed>");
    }
};
} // namespace

class KeyTranslatorTest : public QObject {
    Q_OBJECT

private slots:
    void keysGiveTheirPlainCharacterOnEachLayout() {
        // The plain level even where Shift gives something else on that key.
        const struct {
            const char *layout, *variant;
            uint32_t keyCode;
            QString text;
        } cases[] = {
            {"us", "", keyA, "a"},     {"us", "", key1, "1"}, {"us", "", keySemicolon, ";"},
            {"de", "", keyY, "z"},     {"de", "", keyZ, "y"}, {"fr", "", keyQ, "a"},
            {"fr", "", keyA, "q"},     {"fr", "", key1, "&"}, {"fr", "", key2, "é"},
            {"us", "intl", keyE, "e"}, {"us", "", 8, ""}}; // keycode 8 carries nothing
        for (const auto& c : cases)
            QCOMPARE(Keyboard(c.layout, c.variant).type(c.keyCode), c.text);
    }

    void keysGiveTheLevelTheirModifiersAndLocksSelect() {
        // Real modifier masks: Shift 1, Lock 2, Control 4, Mod2 (Num Lock) 16, Mod5 (level 3) 128.
        constexpr uint32_t shift = 1, lock = 2, numLock = 16, levelThree = 128;
        constexpr uint32_t keyKp1 = 87, keyKp2 = 88, keyComma = 59, keyQ2 = 24;
        const struct {
            const char* layout;
            KeyboardState state;
            uint32_t keyCode;
            QString text;
        } cases[] = {
            {"us", {shift, 0, 0, 0}, keyA, "A"},         {"us", {0, 0, lock, 0}, keyA, "A"},
            {"us", {shift, 0, lock, 0}, keyA, "a"},      {"us", {0, 0, lock, 0}, key1, "1"},
            {"us", {shift, 0, 0, 0}, keySemicolon, ":"}, {"us", {0, shift, 0, 0}, keyA, "A"},
            {"us", {0, 0, numLock, 0}, keyKp1, "1"},     {"us", {0, 0, numLock, 0}, keyKp2, "2"},
            {"de", {shift, 0, 0, 0}, keyComma, ";"},     {"de", {shift, 0, 0, 0}, keyY, "Z"},
            {"de", {levelThree, 0, 0, 0}, keyQ2, "@"},   {"fr", {shift, 0, 0, 0}, key1, "1"},
            {"fr", {0, 0, lock, 0}, key2, "É"}};
        for (const auto& c : cases) {
            Keyboard keyboard(c.layout);
            keyboard.modifiers = c.state;
            QCOMPARE(keyboard.type(c.keyCode), c.text);
        }
        Keyboard keyboard("us");
        // Num Lock off: End, which moves the caret.
        QCOMPARE(keyboard.type(keyKp1), QString(QChar(KeyTranslator::caretKeyText)));
        keyboard.modifiers = {4, 0, 0, 0};           // Control+A is a command, not text
        QCOMPARE(keyboard.type(keyA), QString(QChar(KeyTranslator::chordText)));
    }

    void aPendingDeadKeyComposesOrEnds() {
        const struct {
            const char* locale;
            bool clearState; // whoever owns the state word ended the sequence
            uint32_t keyCode;
            QString text;
        } cases[] = {{"en_US.UTF-8", false, keyE, "é"},
                     {"xx_NOWHERE.UTF-8", false, keyE, "é"}, // no compose table of its own
                     {"en_US.UTF-8", false, keyQ, "q"},      // nothing to compose with
                     {"en_US.UTF-8", false, keyBackSpace, "\b"},
                     {"en_US.UTF-8", true, keyE, "e"}};
        for (const auto& c : cases) {
            Keyboard keyboard("us", "intl", c.locale);
            QVERIFY(keyboard.translator.hasComposeTable());
            QCOMPARE(keyboard.type(keyApostrophe), QString());
            QVERIFY(keyboard.state != 0);
            if (c.clearState)
                keyboard.state = 0;
            QCOMPARE(keyboard.type(c.keyCode), c.text);
            QCOMPARE(keyboard.state, 0u);
            QCOMPARE(keyboard.type(keyE), "e"); // the sequence is over
        }
    }

    void aNewGroupOrKeymapIsUsedFromTheNextKey() {
        Keyboard keyboard("us,de");
        QCOMPARE(keyboard.type(keyY), "y");
        keyboard.modifiers.group = 1; // the group travels with each key's state
        QCOMPARE(keyboard.type(keyY), "z");
        keyboard.modifiers.group = 0;
        QCOMPARE(keyboard.type(keyY), "y");
        QVERIFY(keyboard.source.load("fr"));
        QCOMPARE(keyboard.type(keyQ), "a");
    }

    void modifierKeysAreRecognised() {
        Keyboard keyboard("us", "intl");
        for (const uint32_t key : {keyShiftL, keyControlL, keyCapsLock, keyAltGr})
            QVERIFY2(keyboard.translator.isModifierKey(key), qPrintable(QString::number(key)));
        for (const uint32_t key : {keyA, keyApostrophe, keyReturn, keyBackSpace, keyF1})
            QVERIFY2(!keyboard.translator.isModifierKey(key), qPrintable(QString::number(key)));
    }

    void failuresAreReported() {
        Keyboard keyboard("us");
        QVERIFY(keyboard.source.loadText(QStringLiteral(R"(xkb_keymap {
            xkb_keycodes { minimum = 8; maximum = 20; <K1> = 10; <K2> = 11; };
            xkb_types { include "basic" };
            xkb_compat { include "basic" };
            xkb_symbols { key <K1> { [ UD800 ] }; key <K2> { [ x ] }; };
        };)")));
        CapturedDiagnostics diagnostics;
        QCOMPARE(keyboard.type(10), "<failed>"); // a keysym naming a surrogate
        QCOMPARE(diagnostics.lines.last(), "Key gives no character");
        QCOMPARE(keyboard.type(11), "x");
        keyboard.source.unload();
        diagnostics.lines.clear();
        QCOMPARE(keyboard.type(keyA), "<failed>");
        QCOMPARE(diagnostics.lines, QStringList{"No keyboard layout available"});
    }
};

QTEST_GUILESS_MAIN(KeyTranslatorTest)
#include "KeyTranslatorTest.moc"
