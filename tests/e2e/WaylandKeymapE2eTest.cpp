// A real compositor, sway running headless, whose seat gets a keyboard only when a client makes
// a virtual one with a layout of the test's choice: the keymap it hands its clients, the active
// layout it reports, and typing through its virtual keyboards into an application of the
// test's own.
#include "CompiledKeymapSource.h"
#include "SwayLayoutWatch.h"
#include "WaylandKeymapSource.h"
#include "WaylandVirtualKeyboardOutput.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <unistd.h>

namespace {
// sway refuses to run as root: it runs as this spare user, in a runtime folder of its own.
constexpr uid_t spareUser = 65534;

QString nameOf(const char* layout) { return CompiledKeymapSource(layout).layoutName(); }

class HeadlessSway {
public:
    HeadlessSway() {
        if (::chown(QFile::encodeName(m_dir.path()).constData(), spareUser, spareUser) != 0)
            return;
        QFile config(m_dir.filePath("config"));
        if (!config.open(QIODevice::WriteOnly))
            return;
        config.close();
        QProcessEnvironment env;
        env.insert("XDG_RUNTIME_DIR", m_dir.path());
        env.insert("HOME", m_dir.path());
        env.insert("WLR_BACKENDS", "headless");
        env.insert("WLR_LIBINPUT_NO_DEVICES", "1");
        env.insert("WLR_RENDERER", "pixman");
        m_sway.setProcessEnvironment(env);
        m_sway.setProcessChannelMode(QProcess::MergedChannels);
        const QString id = QString::number(spareUser);
        m_sway.start("setpriv", {"--reuid=" + id, "--regid=" + id, "--clear-groups", "sway",
                                 "-c", config.fileName()});
        // Until its socket appears (it is checked by the caller) or it gives up.
        (void)QTest::qWaitFor(
            [this] { return !socketName().isEmpty() || m_sway.state() == QProcess::NotRunning; },
            20000);
    }
    ~HeadlessSway() {
        for (QProcess* keyboard : std::as_const(m_keyboards)) {
            keyboard->closeWriteChannel();
            if (!keyboard->waitForFinished(5000))
                keyboard->kill();
            keyboard->waitForFinished();
            delete keyboard;
        }
        m_sway.terminate();
        if (!m_sway.waitForFinished(5000))
            m_sway.kill();
        m_sway.waitForFinished();
    }

    QString socketName() const {
        const QStringList entries = QDir(m_dir.path()).entryList({"wayland-*"}, QDir::System);
        return entries.filter(QRegularExpression("^wayland-\\d+$")).value(0);
    }
    QString socketPath() const { return m_dir.filePath(socketName()); }
    QString ipcSocketPath() const {
        return m_dir.filePath(
            QDir(m_dir.path()).entryList({"sway-ipc.*.sock"}, QDir::System).value(0));
    }

    // Sets the held, latched and locked modifiers and the group of keyboard `index`.
    bool setModifiers(int index, uint depressed, uint latched, uint locked, uint group) {
        QProcess* keyboard = m_keyboards.value(index);
        if (!keyboard)
            return false;
        keyboard->write(QStringLiteral("mods %1 %2 %3 %4\n")
                            .arg(depressed).arg(latched).arg(locked).arg(group).toLatin1());
        return keyboard->waitForReadyRead(10000) && keyboard->readAll().startsWith("ok");
    }

    // Starts an application that takes the focus and writes what it is typed to `file`.
    bool startTarget(const QString& file) {
        auto* target = new QProcess;
        m_keyboards.append(target); // ended the same way
        target->setProcessEnvironment(clientEnvironment());
        target->start(TYPOLET_WAYLAND_TEXT_TARGET, {file});
        return target->waitForReadyRead(10000) && target->readAll().startsWith("focused");
    }
    QString log() { return QString::fromLocal8Bit(m_sway.readAll()); }

    // Gives the seat a keyboard with `layout`; it stays until the compositor ends.
    bool addKeyboard(const char* layout) {
        auto* keyboard = new QProcess;
        m_keyboards.append(keyboard);
        keyboard->setProcessEnvironment(clientEnvironment());
        keyboard->start(TYPOLET_VIRTUAL_KEYBOARD, {QString::fromLatin1(layout)});
        return keyboard->waitForReadyRead(10000) && keyboard->readAll().startsWith("ready");
    }

private:
    QProcessEnvironment clientEnvironment() const {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_RUNTIME_DIR", m_dir.path());
        env.insert("WAYLAND_DISPLAY", socketName());
        return env;
    }

    QTemporaryDir m_dir;
    QProcess m_sway;
    QList<QProcess*> m_keyboards;
};
} // namespace

class WaylandKeymapE2eTest : public QObject {
    Q_OBJECT
private slots:
    void followsTheSeatsKeyboard();
    void followsSwaysActiveLayout();
    void checkInputNamesTheCompositorsWayOfTyping();
    void typesThroughTheCompositorsVirtualKeyboard_data();
    void typesThroughTheCompositorsVirtualKeyboard();
};

void WaylandKeymapE2eTest::followsTheSeatsKeyboard() {
    HeadlessSway sway;
    QVERIFY2(!sway.socketName().isEmpty(), qPrintable(sway.log()));

    // No keyboard on the seat yet: the system's layout stands in.
    WaylandKeymapSource source;
    source.setSystemConfigurationFile(QStringLiteral("/nonexistent"));
    QVERIFY2(source.connectToCompositor(sway.socketPath()), qPrintable(sway.log()));
    QCOMPARE(source.origin(), WaylandKeymapSource::Origin::SystemConfiguration);

    // A keyboard arrives, then one with another layout: each keymap is taken as it comes.
    QVERIFY2(sway.addKeyboard("de"), qPrintable(sway.log()));
    QTRY_COMPARE(source.layoutName(), nameOf("de"));
    QCOMPARE(source.origin(), WaylandKeymapSource::Origin::Compositor);
    QVERIFY2(sway.addKeyboard("fr"), qPrintable(sway.log()));
    QTRY_COMPARE(source.layoutName(), nameOf("fr"));

    // A new connection is handed the keymap in force at once.
    WaylandKeymapSource second;
    QVERIFY(second.connectToCompositor(sway.socketPath()));
    QCOMPARE(second.layoutName(), nameOf("fr"));
}

// sway tells the active group only to the focused client, but to every client of its IPC.
void WaylandKeymapE2eTest::followsSwaysActiveLayout() {
    HeadlessSway sway;
    QVERIFY2(!sway.socketName().isEmpty(), qPrintable(sway.log()));
    QVERIFY2(sway.addKeyboard("us,ru"), qPrintable(sway.log()));
    SwayLayoutWatch watch;
    QList<uint> groups;
    connect(&watch, &SwayLayoutWatch::groupChanged, this, [&groups](uint group) { groups.append(group); });
    QVERIFY2(watch.connectToSway(sway.ipcSocketPath()), qPrintable(sway.ipcSocketPath()));
    QTRY_COMPARE(groups, QList<uint>{0});
    QVERIFY(sway.setModifiers(0, 0, 0, 0, 1));
    QTRY_COMPARE(groups, QList<uint>({0, 1}));
    QVERIFY(sway.setModifiers(0, 0, 0, 0, 0));
    QTRY_COMPARE(groups, QList<uint>({0, 1, 0}));
}

// `typolet --check-input` in a sway session of a machine without /dev/uinput: the compositor
// types.
void WaylandKeymapE2eTest::checkInputNamesTheCompositorsWayOfTyping() {
    HeadlessSway sway;
    QVERIFY2(!sway.socketName().isEmpty(), qPrintable(sway.log()));
    QProcess typolet;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("TYPOLET_BACKEND", "evdev");
    env.insert("WAYLAND_DISPLAY", sway.socketPath());
    typolet.setProcessEnvironment(env);
    typolet.start(TYPOLET_BINARY, {"--check-input"});
    QVERIFY(typolet.waitForFinished(30000));
    const QString out = QString::fromUtf8(typolet.readAllStandardOutput());
    QVERIFY2(out.contains("Typing: through the compositor's virtual keyboard"), qPrintable(out));
    QVERIFY2(out.contains("Typing keys: yes."), qPrintable(out));
}

void WaylandKeymapE2eTest::typesThroughTheCompositorsVirtualKeyboard_data() {
    QTest::addColumn<QString>("layouts");
    QTest::addColumn<uint>("locked");
    QTest::addColumn<uint>("group");
    QTest::addColumn<QString>("text");
    constexpr uint capsLock = 1u << 1; // Lock, the second real modifier
    QTest::newRow("plain text") << "us" << 0u << 0u << QStringLiteral("Hello, world! 1+2=3\n\tend");
    QTest::newRow("Caps Lock on") << "us" << capsLock << 0u << QStringLiteral("Hello World, MiXeD case");
    QTest::newRow("a second layout active") << "us,ru" << 0u << 1u << QStringLiteral("hello, мир; Hello");
    QTest::newRow("characters outside the layout")
        << "us" << 0u << 0u << QStringLiteral("漢字 🙂 ẞ é ≠ ⌘ ﬁ Ω");
    QString thousand;
    const QString pieces[] = {QStringLiteral("Typolet "), QStringLiteral("types "),
                              QStringLiteral("Grüße, "), QStringLiteral("привет "),
                              QStringLiteral("漢字 "), QStringLiteral("🙂\n")};
    for (int i = 0; thousand.toUcs4().size() < 1000; ++i)
        thousand += pieces[i % 6];
    thousand = QString::fromUcs4(reinterpret_cast<const char32_t*>(thousand.toUcs4().constData()), 1000);
    QTest::newRow("1,000 characters") << "us" << capsLock << 0u << thousand;
}

// The user's keyboard has its layout, locks and group; Typolet's keyboard types with a keymap
// of its own, which the compositor hands the application along with the keys.
void WaylandKeymapE2eTest::typesThroughTheCompositorsVirtualKeyboard() {
    QFETCH(QString, layouts);
    QFETCH(uint, locked);
    QFETCH(uint, group);
    QFETCH(QString, text);
    HeadlessSway sway;
    QVERIFY2(!sway.socketName().isEmpty(), qPrintable(sway.log()));
    QVERIFY2(sway.addKeyboard(layouts.toLatin1().constData()), qPrintable(sway.log()));
    QTemporaryDir dir;
    const QString typed = dir.filePath("typed");
    QVERIFY2(sway.startTarget(typed), qPrintable(sway.log()));
    QVERIFY(sway.setModifiers(0, 0, 0, locked, group));

    WaylandVirtualKeyboardOutput output;
    QVERIFY2(output.connectToCompositor(sway.socketPath()), qPrintable(sway.log()));
    bool finished = false;
    output.perform({ExpansionAction::type(QStringLiteral("cmd")), ExpansionAction::erase(3),
                    ExpansionAction::type(text)},
                   [&finished] { finished = true; });
    QTRY_VERIFY_WITH_TIMEOUT(finished, 30000);
    const auto read = [&typed] {
        QFile file(typed);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    };
    QTRY_COMPARE_WITH_TIMEOUT(read(), text, 10000);
}

QTEST_GUILESS_MAIN(WaylandKeymapE2eTest)
#include "WaylandKeymapE2eTest.moc"
