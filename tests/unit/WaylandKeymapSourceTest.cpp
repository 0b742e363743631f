// Which keymap is in force in a Wayland session: the user's choice, else the compositor's,
// else the system's configuration.
#include "WaylandKeymapSource.h"
#include "CompiledKeymapSource.h"

#include <QTemporaryDir>
#include <QtTest>
#include <xkbcommon/xkbcommon.h>

namespace {
// `layout` as xkb-data names it: "de", or "de(nodeadkeys)" for a variant.
QString nameOf(const QString& layout) {
    const QStringList parts = layout.split(u'(');
    CompiledKeymapSource reference(parts[0], parts.value(1).remove(u')'));
    return QString::fromUtf8(xkb_keymap_layout_get_name(reference.currentKeymap(), 0));
}

QByteArray keymapText(const QString& layouts) {
    CompiledKeymapSource reference(layouts);
    char* text = xkb_keymap_get_as_string(reference.currentKeymap(), XKB_KEYMAP_FORMAT_TEXT_V1);
    const QByteArray result(text);
    free(text);
    return result;
}
} // namespace

class WaylandKeymapSourceTest : public QObject {
    Q_OBJECT
private slots:
    void init() { qunsetenv("XKB_DEFAULT_LAYOUT"); }
    void cleanup() { qunsetenv("XKB_DEFAULT_LAYOUT"); }
    void theMostSpecificSourceWins_data();
    void theMostSpecificSourceWins();
    void groupsFollowTheCompositor();
    void unreadableInputKeepsTheLayout();
};

void WaylandKeymapSourceTest::theMostSpecificSourceWins_data() {
    QTest::addColumn<QString>("fileLine");
    QTest::addColumn<QString>("environment");
    QTest::addColumn<QString>("compositor");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<WaylandKeymapSource::Origin>("origin");
    using O = WaylandKeymapSource::Origin;
    QTest::newRow("nothing configured") << "" << "" << "" << "" << "us" << O::SystemConfiguration;
    QTest::newRow("system file") << "XKBLAYOUT=\"fr\"" << "" << "" << "" << "fr"
                                 << O::SystemConfiguration;
    QTest::newRow("unquoted") << "XKBLAYOUT=de" << "" << "" << "" << "de" << O::SystemConfiguration;
    QTest::newRow("environment over file") << "XKBLAYOUT=\"fr\"" << "ru" << "" << "" << "ru"
                                           << O::SystemConfiguration;
    QTest::newRow("compositor over system") << "XKBLAYOUT=\"fr\"" << "ru" << "de" << "" << "de"
                                            << O::Compositor;
    QTest::newRow("choice over compositor") << "" << "" << "de" << "ru" << "ru" << O::Chosen;
    QTest::newRow("chosen variant") << "" << "" << "" << "de(nodeadkeys)" << "de(nodeadkeys)"
                                    << O::Chosen;
    QTest::newRow("unknown system layout") << "XKBLAYOUT=\"nosuchlayout\"" << "" << "" << ""
                                           << "us" << O::SystemConfiguration;
}

void WaylandKeymapSourceTest::theMostSpecificSourceWins() {
    QFETCH(QString, fileLine);
    QFETCH(QString, environment);
    QFETCH(QString, compositor);
    QFETCH(QString, chosen);
    QFETCH(QString, expected);
    QFETCH(WaylandKeymapSource::Origin, origin);
    QTemporaryDir dir;
    QFile file(dir.filePath("keyboard"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# written by the test\nXKBMODEL=\"pc105\"\n" + fileLine.toUtf8() + "\n");
    file.close();
    if (!environment.isEmpty())
        qputenv("XKB_DEFAULT_LAYOUT", environment.toUtf8());

    WaylandKeymapSource source;
    source.setSystemConfigurationFile(file.fileName());
    if (!compositor.isEmpty())
        QVERIFY(source.takeCompositorKeymap(keymapText(compositor)));
    if (!chosen.isEmpty())
        QVERIFY(source.setChosenLayout(chosen));
    QVERIFY(source.currentKeymap());
    QCOMPARE(source.layoutName(), nameOf(expected));
    QCOMPARE(source.origin(), origin);

    // Back to automatic: the compositor's or the system's again.
    QVERIFY(source.setChosenLayout({}));
    QVERIFY(source.origin() != WaylandKeymapSource::Origin::Chosen);
}

void WaylandKeymapSourceTest::groupsFollowTheCompositor() {
    WaylandKeymapSource source;
    QSignalSpy changes(&source, &WaylandKeymapSource::changed);
    QVERIFY(source.takeCompositorKeymap(keymapText("us,ru")));
    source.setCompositorGroup(1);
    QCOMPARE(source.currentGroup(), 1u);
    QCOMPARE(source.layoutName(), nameOf("ru"));
    // A keymap with fewer layouts makes a group past its end meaningless.
    QVERIFY(source.takeCompositorKeymap(keymapText("de")));
    QCOMPARE(source.currentGroup(), 0u);
    QCOMPARE(changes.size(), 3);
}

void WaylandKeymapSourceTest::unreadableInputKeepsTheLayout() {
    WaylandKeymapSource source;
    QVERIFY(source.takeCompositorKeymap(keymapText("de")));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("could not be read"));
    QVERIFY(!source.takeCompositorKeymap("xkb_keymap { garbage"));
    QVERIFY(!source.setChosenLayout("nosuchlayout"));
    QCOMPARE(source.layoutName(), nameOf("de"));
    QVERIFY(!source.connectToCompositor(QStringLiteral("/nonexistent/wayland-0")));
    QCOMPARE(source.layoutName(), nameOf("de"));
}

QTEST_GUILESS_MAIN(WaylandKeymapSourceTest)
#include "WaylandKeymapSourceTest.moc"
