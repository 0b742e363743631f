// Typing through a virtual keyboard: the events written are read back through xkbcommon, as a
// compositor reads them, and must give the content back exactly.
#include "UinputKeyboardOutput.h"
#include "CapturedDiagnostics.h"
#include "CompiledKeymapSource.h"

#include <QSocketNotifier>
#include <QtTest>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <linux/input.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

namespace {
// What a reader of the events sees: the text, BackSpaces and Left presses, and whether every
// key went up again.
struct Reading {
    QString text;
    int backspaces = 0;
    int lefts = 0;
    bool keysLeftDown = false;
};

QByteArray drain(int fd) {
    QByteArray bytes;
    char chunk[4096];
    for (ssize_t got; (got = ::read(fd, chunk, sizeof chunk)) > 0;)
        bytes.append(chunk, got);
    return bytes;
}

Reading readBack(const QByteArray& events, xkb_keymap* keymap, xkb_mod_mask_t lockedMods,
                 uint32_t group = 0) {
    Reading reading;
    xkb_state* state = xkb_state_new(keymap);
    xkb_state_update_mask(state, 0, 0, lockedMods, 0, 0, group);
    QSet<uint32_t> down;
    input_event event{};
    for (qsizetype at = 0; at + qsizetype(sizeof event) <= events.size(); at += sizeof event) {
        std::memcpy(&event, events.constData() + at, sizeof event);
        if (event.type != EV_KEY)
            continue;
        const uint32_t code = event.code + 8;
        if (event.value == 1) {
            down.insert(code);
            const xkb_keysym_t keysym = xkb_state_key_get_one_sym(state, code);
            if (keysym == XKB_KEY_BackSpace)
                ++reading.backspaces;
            else if (keysym == XKB_KEY_Left)
                ++reading.lefts;
            else if (keysym == XKB_KEY_Return)
                reading.text += u'\n';
            else if (keysym == XKB_KEY_Tab)
                reading.text += u'\t';
            else {
                char utf8[16] = {};
                xkb_state_key_get_utf8(state, code, utf8, sizeof utf8);
                reading.text += QString::fromUtf8(utf8);
            }
        } else if (event.value == 0) {
            down.remove(code);
        }
        xkb_state_update_key(state, code, event.value ? XKB_KEY_DOWN : XKB_KEY_UP);
    }
    reading.keysLeftDown = !down.isEmpty();
    xkb_state_unref(state);
    return reading;
}

// Every printable character that some key of the first group gives at some level.
QString charactersOf(xkb_keymap* keymap) {
    QString text;
    QSet<char32_t> seen;
    for (uint32_t code = xkb_keymap_min_keycode(keymap); code <= xkb_keymap_max_keycode(keymap);
         ++code) {
        if (xkb_keymap_num_layouts_for_key(keymap, code) == 0)
            continue;
        for (xkb_level_index_t level = 0; level < xkb_keymap_num_levels_for_key(keymap, code, 0);
             ++level) {
            const xkb_keysym_t* syms = nullptr;
            if (xkb_keymap_key_get_syms_by_level(keymap, code, 0, level, &syms) != 1)
                continue;
            const char32_t c = xkb_keysym_to_utf32(syms[0]);
            if (c >= 0x20 && c != 0x7f && !seen.contains(c)) {
                seen.insert(c);
                text += QString::fromUcs4(&c, 1);
            }
        }
    }
    return text;
}

struct Rig {
    CompiledKeymapSource keymaps;
    UinputKeyboardOutput output{keymaps};
    int fds[2] = {-1, -1};
    bool finished = false;

    explicit Rig(const QString& layout) : keymaps(layout) {
        if (::pipe2(fds, O_NONBLOCK | O_CLOEXEC) != 0)
            qFatal("no pipe");
        ::fcntl(fds[1], F_SETPIPE_SZ, 1 << 20);
        output.setDevice(fds[1]);
    }
    ~Rig() {
        ::close(fds[0]);
        ::close(fds[1]);
    }
    bool perform(const Expansion& actions) {
        finished = false;
        output.perform(actions, [this] { finished = true; });
        return QTest::qWaitFor([this] { return finished; });
    }
    xkb_mod_mask_t mask(const char* name) {
        return xkb_mod_mask_t(1) << xkb_keymap_mod_get_index(keymaps.currentKeymap(), name);
    }
    Reading read(xkb_mod_mask_t lockedMods = 0, uint32_t group = 0) {
        return readBack(drain(fds[0]), keymaps.currentKeymap(), lockedMods, group);
    }
};
} // namespace

class UinputKeyboardOutputTest : public QObject {
    Q_OBJECT
private slots:
    void typesEveryCharacterTheLayoutGives_data();
    void typesEveryCharacterTheLayoutGives();
    void skippedCharactersAreCountedOnce();
    void typesInTheGroupTheKeyboardsAreIn();
    void aCompositorReadingSixtyFourEventsAtATimeLosesNone();
    void waitsForHeldModifiersToBeLetGo_data();
    void waitsForHeldModifiersToBeLetGo();
    void writeFailureStopsTyping();
};

void UinputKeyboardOutputTest::typesEveryCharacterTheLayoutGives_data() {
    QTest::addColumn<QString>("layout");
    QTest::addColumn<bool>("capsLock");
    for (const char* layout : {"us", "de", "fr", "ru"}) {
        QTest::addRow("%s", layout) << QString::fromLatin1(layout) << false;
        QTest::addRow("%s, Caps Lock on", layout) << QString::fromLatin1(layout) << true;
    }
}

void UinputKeyboardOutputTest::typesEveryCharacterTheLayoutGives() {
    QFETCH(QString, layout);
    QFETCH(bool, capsLock);
    Rig rig(layout);
    const xkb_mod_mask_t locked = capsLock ? rig.mask(XKB_MOD_NAME_CAPS) : 0;
    rig.output.setKeyboardStateQuery([locked] { return KeyboardState{0, 0, locked, 0}; });
    const QString layoutText = charactersOf(rig.keymaps.currentKeymap());
    QVERIFY(!layoutText.isEmpty());
    QStringList missing;
    rig.output.setMissingTextHandler([&](const QString& text, std::function<void()> done) {
        missing.append(text);
        done();
    });

    // Characters no layout here gives sit between ones it does, and a line break and a tab.
    const QString half1 = layoutText.left(layoutText.size() / 2);
    const QString half2 = layoutText.mid(layoutText.size() / 2);
    const QString foreign = QStringLiteral("漢🙂");
    // A text meant for pasting is typed: no application's paste keys are known here.
    QVERIFY(rig.perform({ExpansionAction::erase(3),
                         ExpansionAction::type(half1 + foreign + "\r\n\t"),
                         ExpansionAction::paste(half2 + foreign), ExpansionAction::moveLeft(2)}));

    const Reading reading = rig.read(locked);
    const QString expected = half1 + "\n\t" + half2;
    for (qsizetype i = 0; i < std::min(reading.text.size(), expected.size()); ++i)
        QVERIFY2(reading.text[i] == expected[i],
                 qPrintable(QStringLiteral("%1 instead of %2 at %3")
                                .arg(reading.text.mid(i, 3), expected.mid(i, 3), QString::number(i))));
    QCOMPARE(reading.text, expected);
    QCOMPARE(missing, QStringList({foreign, foreign}));
    QCOMPARE(reading.backspaces, 3);
    QCOMPARE(reading.lefts, 2);
    QVERIFY(!reading.keysLeftDown);
}

void UinputKeyboardOutputTest::skippedCharactersAreCountedOnce() {
    Rig rig("us");
    CapturedDiagnostics diagnostics(false);
    QVERIFY(rig.perform({ExpansionAction::type(QStringLiteral("aжb漢c"))}));
    QCOMPARE(rig.read().text, QStringLiteral("abc"));
    const QStringList skipLines = diagnostics.lines.filter(QStringLiteral("Skipped"));
    QCOMPARE(skipLines.size(), 1);
    QVERIFY2(skipLines[0].contains(QStringLiteral(" 2 ")), qPrintable(skipLines[0]));
    QVERIFY(!skipLines[0].contains(u'ж'));
}

// The keymap's source knows only the group last reported to it; the keyboards are in the
// second one (ru). Typed in the first, "hello" would read as "руддщ".
void UinputKeyboardOutputTest::typesInTheGroupTheKeyboardsAreIn() {
    Rig rig("us,ru");
    rig.output.setKeyboardStateQuery([] { return KeyboardState{0, 0, 0, 1}; });
    QStringList missing;
    rig.output.setMissingTextHandler([&](const QString& text, std::function<void()> done) {
        missing.append(text);
        done();
    });
    QVERIFY(rig.perform({ExpansionAction::type(QStringLiteral("привет hello"))}));
    QCOMPARE(rig.read(0, 1).text, QStringLiteral("привет "));
    QCOMPARE(missing, QStringList{QStringLiteral("hello")});
}

// The kernel gives each reader of a keys-only device a queue of 64 events and drops what does
// not fit: a compositor that reads at most 64 events whenever it gets to it must never find
// more waiting, however long and mixed-case the text.
void UinputKeyboardOutputTest::aCompositorReadingSixtyFourEventsAtATimeLosesNone() {
    Rig rig("us");
    constexpr int queueSize = 64;
    QByteArray read;
    int mostWaiting = 0;
    QSocketNotifier compositor(rig.fds[0], QSocketNotifier::Read);
    connect(&compositor, &QSocketNotifier::activated, this, [&] {
        int bytes = 0;
        ::ioctl(rig.fds[0], FIONREAD, &bytes);
        const int waiting = bytes / int(sizeof(input_event));
        mostWaiting = std::max(mostWaiting, waiting);
        QByteArray batch(std::min(waiting, queueSize) * int(sizeof(input_event)), '\0');
        const ssize_t got = ::read(rig.fds[0], batch.data(), size_t(batch.size()));
        read.append(batch.constData(), std::max<ssize_t>(got, 0));
    });
    QString text;
    for (int i = 0; i < 40; ++i)
        text += QStringLiteral("Typolet Types THIS, ");
    QVERIFY(rig.perform({ExpansionAction::erase(20), ExpansionAction::type(text)}));
    QTRY_COMPARE(readBack(read, rig.keymaps.currentKeymap(), 0).text.size(), text.size());
    QVERIFY2(mostWaiting <= queueSize, qPrintable(QString::number(mostWaiting)));
    QCOMPARE(readBack(read, rig.keymaps.currentKeymap(), 0).text, text);
}

// Typing waits while the user holds modifiers. Level keys still held after the wait are
// planned around; with Control still held every key would be a shortcut, so it types nothing.
void UinputKeyboardOutputTest::waitsForHeldModifiersToBeLetGo_data() {
    QTest::addColumn<QString>("modifier");
    QTest::addColumn<bool>("letGo");
    QTest::addColumn<QString>("typed");
    QTest::newRow("Shift let go") << XKB_MOD_NAME_SHIFT << true << "Grüße 12";
    QTest::newRow("Control held on") << XKB_MOD_NAME_CTRL << false << "";
}

void UinputKeyboardOutputTest::waitsForHeldModifiersToBeLetGo() {
    QFETCH(QString, modifier);
    QFETCH(bool, letGo);
    QFETCH(QString, typed);
    Rig rig("de");
    CapturedDiagnostics diagnostics(false);
    bool held = true;
    const xkb_mod_mask_t mask = rig.mask(modifier.toLatin1().constData());
    rig.output.setKeyboardStateQuery([&] { return KeyboardState{held ? mask : 0, 0, 0, 0}; });
    rig.output.perform({ExpansionAction::type(QStringLiteral("Grüße 12"))},
                       [&] { rig.finished = true; });
    QTest::qWait(3 * UinputKeyboardOutput::heldModifiersPollMs);
    QVERIFY(!rig.finished);
    QVERIFY(rig.read().text.isEmpty());
    held = !letGo;
    QVERIFY(QTest::qWaitFor([&] { return rig.finished; }));
    const QByteArray events = drain(rig.fds[0]);
    QCOMPARE(readBack(events, rig.keymaps.currentKeymap(), 0).text, typed);
    QCOMPARE(diagnostics.lines.filter(QStringLiteral("Cancelled typing")).size(),
             typed.isEmpty() ? 1 : 0);
}

void UinputKeyboardOutputTest::writeFailureStopsTyping() {
    Rig rig("us");
    const int readOnly = ::open("/dev/null", O_RDONLY | O_CLOEXEC); // every write fails
    rig.output.setDevice(readOnly);
    CapturedDiagnostics diagnostics(false);
    QVERIFY(rig.perform({ExpansionAction::type(QString(200, u'x'))}));
    ::close(readOnly);
    QCOMPARE(diagnostics.lines.filter(QStringLiteral("Stopped typing")).size(), 1);
}

QTEST_GUILESS_MAIN(UinputKeyboardOutputTest)
#include "UinputKeyboardOutputTest.moc"
