// GNOME's layout in use, read from its input-source settings (kept in memory here).
#include <gio/gio.h> // before Qt's headers, which make "signals" a keyword

#include "GnomeInputSources.h"

#include <QtTest>

namespace {
void set(GSettings* settings, const char* key,
         std::initializer_list<std::pair<const char*, const char*>> sources) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ss)"));
    for (const auto& [type, id] : sources)
        g_variant_builder_add(&builder, "(ss)", type, id);
    g_settings_set_value(settings, key, g_variant_builder_end(&builder));
}
} // namespace

class GnomeInputSourcesTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { qputenv("GSETTINGS_BACKEND", "memory"); }

    // The source used last is the one in use; its place among the layouts (input methods
    // have no group) is its group in the compositor's keymap.
    void theLayoutInUseIsAGroupOfTheLayouts() {
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
};

QTEST_GUILESS_MAIN(GnomeInputSourcesTest)
#include "GnomeInputSourcesTest.moc"
