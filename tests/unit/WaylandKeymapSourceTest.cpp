// Which keymap is in force in a Wayland session: the user's choice, else the compositor's,
// else the system's configuration; GNOME's layout in use, read from its input-source settings
// (kept in memory here); and the backend taking the user's choice with the other settings.
#include <gio/gio.h> // before Qt's headers, which make "signals" a keyword

#include "CompiledKeymapSource.h"
#include "EngineSettings.h"
#include "EvdevEngineBackend.h"
#include "GnomeInputSources.h"
#include "RecordingAlertPresenter.h"
#include "WaylandKeymapSource.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
// The name of `layout` as xkb-data gives it: "de", or "de(nodeadkeys)" for a variant.
QString nameOf(const QString& layout) {
    const QStringList parts = layout.split(u'(');
    return CompiledKeymapSource(parts[0], parts.value(1).remove(u')')).layoutName();
}

QByteArray keymapText(const QString& layouts) { return CompiledKeymapSource(layouts).text(); }

void set(GSettings* settings, const char* key,
         std::initializer_list<std::pair<const char*, const char*>> sources) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ss)"));
    for (const auto& [type, id] : sources)
        g_variant_builder_add(&builder, "(ss)", type, id);
    g_settings_set_value(settings, key, g_variant_builder_end(&builder));
}
} // namespace

class WaylandKeymapSourceTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { qputenv("GSETTINGS_BACKEND", "memory"); }
    void init() { qunsetenv("XKB_DEFAULT_LAYOUT"); }
    void cleanup() { qunsetenv("XKB_DEFAULT_LAYOUT"); }
    void theMostSpecificSourceWins_data();
    void theMostSpecificSourceWins();
    void groupsFollowTheCompositor();
    void unreadableInputKeepsTheLayout();
    void gnomesLayoutInUseIsAGroupOfTheLayouts();
    void theBackendAppliesTheChosenLayoutWhenItChanges();
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

// The source used last is the one in use; its place among the layouts (input methods
// have no group) is its group in the compositor's keymap.
void WaylandKeymapSourceTest::gnomesLayoutInUseIsAGroupOfTheLayouts() {
    GnomeInputSources sources;
    QVERIFY2(sources.isAvailable(), "the GNOME input-source settings schema is missing");
    GSettings* settings = g_settings_new("org.gnome.desktop.input-sources");
    set(settings, "sources", {{"xkb", "us"}, {"ibus", "anthy"}, {"xkb", "de+nodeadkeys"}});
    set(settings, "mru-sources", {});
    QCOMPARE(sources.currentGroup(), std::optional<uint>(0));

    QSignalSpy switched(&sources, &GnomeInputSources::groupChanged);
    set(settings, "mru-sources", {{"xkb", "de+nodeadkeys"}, {"xkb", "us"}});
    QTRY_VERIFY(!switched.isEmpty());
    QCOMPARE(switched.last().at(0).toUInt(), 1u);
    set(settings, "mru-sources", {{"ibus", "anthy"}, {"xkb", "us"}});
    QCOMPARE(sources.currentGroup(), std::nullopt);

    // gnome-shell makes keymaps of three layouts each (plus the locale's): the fourth and
    // fifth layouts are the first and second groups of the second keymap.
    set(settings, "sources", {{"xkb", "us"}, {"xkb", "de"}, {"xkb", "fr"}, {"ibus", "anthy"},
                              {"xkb", "ru"}, {"xkb", "gr"}});
    for (const auto& [inUse, group] : {std::pair("fr", 2u), std::pair("ru", 0u), std::pair("gr", 1u)}) {
        set(settings, "mru-sources", {{"xkb", inUse}});
        QCOMPARE(sources.currentGroup(), std::optional<uint>(group));
    }
    g_object_unref(settings);
}

// A keymap is compiled only when the choice changed, one that does not compile keeps the layout
// in use, and every change of the layout in use is said.
void WaylandKeymapSourceTest::theBackendAppliesTheChosenLayoutWhenItChanges() {
    RecordingAlertPresenter guidance;
    QTemporaryDir devices;
    EvdevEngineBackend backend(guidance, nullptr, devices.path(),
                               devices.filePath(QStringLiteral("uinput")));
    QSignalSpy said(&backend, &EngineBackend::layoutInUseChanged);
    const auto lastSaid = [&said] { return said.last().constFirst().toString(); };
    EngineSettings settings;
    settings.keyboardLayout = QStringLiteral("de(nodeadkeys)");
    backend.apply(settings);
    QCOMPARE(said.size(), 1);
    QVERIFY2(lastSaid().startsWith(QStringLiteral("German (no dead keys), from your choice")),
             qPrintable(lastSaid()));

    settings.paused = true; // another setting: the same keymap stays
    backend.apply(settings);
    QCOMPARE(said.size(), 1);

    settings.keyboardLayout = QStringLiteral("nosuchlayout");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("could not be loaded"));
    backend.apply(settings);
    QCOMPARE(said.size(), 1);
    QVERIFY(backend.layoutInUse().startsWith(QStringLiteral("German (no dead keys)")));

    settings.keyboardLayout.clear(); // the desktop's again
    backend.apply(settings);
    QCOMPARE(said.size(), 2);
    QVERIFY2(!lastSaid().contains(QStringLiteral("your choice")), qPrintable(lastSaid()));
}

QTEST_GUILESS_MAIN(WaylandKeymapSourceTest)
#include "WaylandKeymapSourceTest.moc"
