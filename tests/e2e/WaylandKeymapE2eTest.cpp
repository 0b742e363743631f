// The keymap a real compositor hands its clients: sway running headless, whose seat gets a
// keyboard only when a client makes a virtual one with a layout of the test's choice.
#include "WaylandKeymapSource.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

namespace {
// sway refuses to run as root: it runs as this spare user, in a runtime folder of its own.
constexpr uid_t spareUser = 65534;

QString nameOf(const char* layout) {
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
    const xkb_rule_names names{"evdev", "pc105", layout, "", ""};
    xkb_keymap* keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    const QString name = QString::fromUtf8(xkb_keymap_layout_get_name(keymap, 0));
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return name;
}

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
    QString log() { return QString::fromLocal8Bit(m_sway.readAll()); }

    // Gives the seat a keyboard with `layout`; it stays until the compositor ends.
    bool addKeyboard(const char* layout) {
        auto* keyboard = new QProcess;
        m_keyboards.append(keyboard);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_RUNTIME_DIR", m_dir.path());
        env.insert("WAYLAND_DISPLAY", socketName());
        keyboard->setProcessEnvironment(env);
        keyboard->start(TYPOLET_VIRTUAL_KEYBOARD, {QString::fromLatin1(layout)});
        return keyboard->waitForReadyRead(10000) && keyboard->readAll().startsWith("ready");
    }

private:
    QTemporaryDir m_dir;
    QProcess m_sway;
    QList<QProcess*> m_keyboards;
};
} // namespace

class WaylandKeymapE2eTest : public QObject {
    Q_OBJECT
private slots:
    void followsTheSeatsKeyboard();
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

QTEST_GUILESS_MAIN(WaylandKeymapE2eTest)
#include "WaylandKeymapE2eTest.moc"
