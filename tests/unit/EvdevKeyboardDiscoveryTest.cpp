// Finding the keyboards among the device nodes of a folder, the permission answers drawn from
// them, and keyboards plugged in and taken away while the monitor runs.
#include "CompiledKeymapSource.h"
#include "DeviceHotplugSource.h"
#include "EvdevKeyMonitor.h"
#include "EvdevKeyboardFinder.h"
#include "EvdevPermissionProbe.h"
#include "FakeInputDevices.h"
#include "LibevdevDeviceAccess.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
struct FakeHotplug : DeviceHotplugSource {
    Handler handler;
    bool start(Handler h) override {
        handler = std::move(h);
        return true;
    }
};

struct Folder {
    QTemporaryDir dir;
    FakeInputDevices devices{dir.path()};
    EvdevKeyboardFinder finder{devices, dir.path()};
    QString path(const QString& file) const { return dir.filePath(file); }
};
} // namespace

class EvdevKeyboardDiscoveryTest : public QObject {
    Q_OBJECT

private slots:
    void onlyTheUsersReadableKeyboardsCount() {
        Folder folder;
        folder.devices.addNode("event10", "USB keyboard", true);
        folder.devices.addNode("event2", "Laptop keyboard", true);
        folder.devices.addNode("event3", "Optical mouse", false);
        folder.devices.addNode("event4", InputDeviceAccess::ownKeyboardName, true);
        folder.devices.addNode("event5", "Locked keyboard", true, false);
        folder.devices.addNode("mouse0", "Optical mouse", false);
        QStringList found, usable, locked;
        for (const auto& node : folder.finder.scan()) {
            found.append(QFileInfo(node.path).fileName());
            if (node.usable())
                usable.append(node.name);
            if (node.keyboard && !node.readable)
                locked.append(QFileInfo(node.path).fileName());
        }
        QCOMPARE(found, QStringList({"event2", "event3", "event4", "event5", "event10"}));
        QCOMPARE(usable, QStringList({"Laptop keyboard", "USB keyboard"}));
        QCOMPARE(locked, QStringList{"event5"}); // known as a keyboard without opening it
        QCOMPARE(folder.finder.openKeyboard(folder.path("event3")), -1);
        QCOMPARE(folder.finder.openKeyboard(folder.path("event4")), -1);
    }

    void permissionsFollowTheNodes_data() {
        QTest::addColumn<bool>("keyboardReadable");
        QTest::addColumn<bool>("uinputWritable");
        for (const bool readable : {false, true})
            for (const bool writable : {false, true})
                QTest::addRow("readable %d, writable %d", readable, writable) << readable << writable;
    }
    void permissionsFollowTheNodes() {
        QFETCH(bool, keyboardReadable);
        QFETCH(bool, uinputWritable);
        Folder folder;
        folder.devices.addNode("event0", "Optical mouse", false);
        folder.devices.addNode("event1", "Keyboard", true, keyboardReadable);
        folder.devices.uinputWritable = uinputWritable;
        EvdevPermissionProbe probe(folder.devices, folder.finder, folder.path("uinput"));
        QCOMPARE(probe.canObserveKeys(), keyboardReadable);
        QCOMPARE(probe.canPostKeys(), uinputWritable);
    }

    void keyboardsPluggedInLaterAreReadAndThoseTakenAwayDropped() {
        Folder folder;
        folder.devices.addNode("event0", "Laptop keyboard", true);
        CompiledKeymapSource keymap;
        FakeHotplug hotplug;
        EvdevKeyMonitor monitor(keymap, folder.devices, folder.finder, &hotplug);
        QList<uint32_t> keys;
        QVERIFY(monitor.start([&keys](const KeyStroke& stroke) { keys.append(stroke.keyCode); }));
        QCOMPARE(monitor.keyboardNames(), QStringList{"Laptop keyboard"});

        folder.devices.addNode("event1", "USB keyboard", true);
        folder.devices.addNode("event2", "Optical mouse", false);
        hotplug.handler(folder.path("event1"), true);
        hotplug.handler(folder.path("event1"), true); // announced twice: read once
        hotplug.handler(folder.path("event2"), true);
        hotplug.handler("/elsewhere/event1", false);
        QCOMPARE(monitor.keyboardNames(), QStringList({"Laptop keyboard", "USB keyboard"}));
        FakeInputDevices::send(folder.devices.peer("event1"), EV_KEY, KEY_A, 1);
        FakeInputDevices::send(folder.devices.peer("event1"), EV_SYN, SYN_REPORT, 0);
        QTRY_COMPARE(keys, QList<uint32_t>{KEY_A + 8u});

        folder.devices.removeNode("event0");
        hotplug.handler(folder.path("event0"), false);
        QCOMPARE(monitor.keyboardNames(), QStringList{"USB keyboard"});
    }

    void theKernelsAccessTakesNoOtherNodeForAnInputDevice() {
        LibevdevDeviceAccess access;
        QCOMPARE(access.openForReading("/nonexistent/event0"), -1);
        const int fd = access.openForReading("/dev/null");
        QVERIFY(fd >= 0);
        QVERIFY(!access.describe(fd));
        QVERIFY(!access.keysDown(fd));
        ::close(fd);
        QVERIFY(!access.listedAsKeyboard("/dev/null"));
    }

    void aMonitorWithNothingToReadDoesNotStart() {
        Folder folder;
        CompiledKeymapSource keymap;
        EvdevKeyMonitor monitor(keymap, folder.devices, folder.finder);
        QVERIFY(!monitor.start([](const KeyStroke&) {}));
        FakeHotplug hotplug;
        EvdevKeyMonitor waiting(keymap, folder.devices, folder.finder, &hotplug);
        QVERIFY(waiting.start([](const KeyStroke&) {}));
    }
};

QTEST_GUILESS_MAIN(EvdevKeyboardDiscoveryTest)
#include "EvdevKeyboardDiscoveryTest.moc"
