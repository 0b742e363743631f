// Finding the keyboards among the device nodes of a folder, the permission answers drawn from
// them, and keyboards plugged in and taken away while the monitor runs.
#include "CompiledKeymapSource.h"
#include "DeviceHotplugSource.h"
#include "EvdevKeyMonitor.h"
#include "EvdevKeyboardFinder.h"
#include "EvdevPermissionProbe.h"
#include "FakeInputDevices.h"
#include "LibevdevDeviceAccess.h"
#include "UdevHotplugSource.h"
#include "UinputDevice.h"

#include <QTemporaryDir>
#include <QtTest>
#include <libevdev/libevdev.h>

namespace {
struct FakeHotplug : DeviceHotplugSource {
    bool start(Handler) override { return true; }
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
        // Our own, renamed by a program that took it over: its id still says whose it is.
        folder.devices.addNode("event6", "keyd virtual keyboard", true);
        folder.devices.setId("event6", InputDeviceAccess::ownVendor, InputDeviceAccess::ownProduct);
        folder.devices.addNode("mouse0", "Optical mouse", false);
        QStringList found, usable, locked;
        for (const auto& node : folder.finder.scan()) {
            found.append(QFileInfo(node.path).fileName());
            if (node.usable())
                usable.append(node.name);
            if (node.keyboard && !node.readable)
                locked.append(QFileInfo(node.path).fileName());
        }
        QCOMPARE(found, QStringList({"event2", "event3", "event4", "event5", "event6", "event10"}));
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

    // What the virtual keyboard announces: an id of its own that remappers can be told to
    // leave alone, and keys only, so that udev and libinput see no pointer in it.
    void theVirtualKeyboardIsAKeyboardOfItsOwnAndNothingElse() {
        libevdev* device = UinputDevice::description();
        QCOMPARE(libevdev_get_id_vendor(device), int(InputDeviceAccess::ownVendor));
        QCOMPARE(libevdev_get_id_product(device), int(InputDeviceAccess::ownProduct));
        for (const unsigned int key : {KEY_ESC, KEY_A, KEY_102ND, KEY_F24, KEY_OK, KEY_MACRO30})
            QVERIFY2(libevdev_has_event_code(device, EV_KEY, key), qPrintable(QString::number(key)));
        for (const unsigned int button : {BTN_LEFT, BTN_TOUCH, BTN_STYLUS, BTN_JOYSTICK, BTN_SOUTH,
                                          BTN_DPAD_UP, BTN_TRIGGER_HAPPY1})
            QVERIFY2(!libevdev_has_event_code(device, EV_KEY, button), qPrintable(QString::number(button)));
        QVERIFY(!libevdev_has_event_type(device, EV_REL));
        libevdev_free(device);
    }

    // Keyboards plugged in later are read, those taken away dropped. udev announces "change"
    // when a node's rules run again, as they do when the access rule is applied after the
    // keyboard appeared: a keyboard that could not be read may be now.
    void aKeyboardMadeReadableLaterIsRead() {
        Folder folder;
        folder.devices.addNode("event0", "Laptop keyboard", true);
        folder.devices.addNode("event1", "USB keyboard", true, false);
        folder.devices.addNode("event2", "Optical mouse", false);
        CompiledKeymapSource keymap;
        UdevHotplugSource udev;
        EvdevKeyMonitor monitor(keymap, folder.devices, folder.finder, &udev);
        QList<uint32_t> keys;
        QVERIFY(monitor.start([&keys](const KeyStroke& stroke) { keys.append(stroke.keyCode); }));
        udev.announce("add", folder.path("event1"));
        udev.announce("add", folder.path("event2"));
        QCOMPARE(monitor.keyboardNames(), QStringList{"Laptop keyboard"});
        folder.devices.setReadable("event1", true);
        udev.announce("change", folder.path("event1"));
        udev.announce("change", folder.path("event1")); // read once
        QCOMPARE(monitor.keyboardNames(), QStringList({"Laptop keyboard", "USB keyboard"}));
        FakeInputDevices::send(folder.devices.peer("event1"), EV_KEY, KEY_A, 1);
        FakeInputDevices::send(folder.devices.peer("event1"), EV_SYN, SYN_REPORT, 0);
        QTRY_COMPARE(keys, QList<uint32_t>{KEY_A + 8u});
        folder.devices.removeNode("event0");
        udev.announce("remove", folder.path("event0"));
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
