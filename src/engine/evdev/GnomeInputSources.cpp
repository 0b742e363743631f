// GLib's headers first: they use "signals" as a name, which Qt's headers make a keyword.
#include <gio/gio.h>

#include "GnomeInputSources.h"

#include <QString>
#include <utility>

namespace {
constexpr const char* schemaId = "org.gnome.desktop.input-sources";

// The (type, id) pairs of an a(ss) setting, such as ("xkb", "de+nodeadkeys").
QList<std::pair<QString, QString>> sourcesOf(GSettings* settings, const char* key) {
    QList<std::pair<QString, QString>> sources;
    GVariant* value = g_settings_get_value(settings, key);
    GVariantIter iter;
    g_variant_iter_init(&iter, value);
    const char* type = nullptr;
    const char* id = nullptr;
    while (g_variant_iter_next(&iter, "(&s&s)", &type, &id))
        sources.append({QString::fromUtf8(type), QString::fromUtf8(id)});
    g_variant_unref(value);
    return sources;
}
} // namespace

GnomeInputSources::GnomeInputSources(QObject* parent) : QObject(parent) {
    GSettingsSchemaSource* schemas = g_settings_schema_source_get_default();
    GSettingsSchema* schema =
        schemas ? g_settings_schema_source_lookup(schemas, schemaId, TRUE) : nullptr;
    if (!schema)
        return;
    m_settings = g_settings_new_full(schema, nullptr, nullptr);
    g_settings_schema_unref(schema);
    m_handler = g_signal_connect(m_settings, "changed", G_CALLBACK(settingChanged), this);
}

GnomeInputSources::~GnomeInputSources() {
    if (!m_settings)
        return;
    g_signal_handler_disconnect(m_settings, m_handler);
    g_object_unref(m_settings);
}

std::optional<uint> GnomeInputSources::currentGroup() const {
    if (!m_settings)
        return std::nullopt;
    const auto sources = sourcesOf(m_settings, "sources");
    const auto recent = sourcesOf(m_settings, "mru-sources");
    if (sources.isEmpty())
        return std::nullopt;
    const auto inUse = recent.isEmpty() ? sources.first() : recent.first();
    // gnome-shell puts at most three layouts in one keymap (the fourth group is the locale's,
    // for mnemonics): the layouts 1-3 make one keymap, 4-6 the next, and so on. A layout's
    // group is its place within its own keymap. A layout listed twice counts once.
    constexpr uint layoutsPerKeymap = 3;
    QList<std::pair<QString, QString>> layouts;
    for (const auto& source : sources) {
        if (source.first != QLatin1String("xkb") || layouts.contains(source))
            continue; // input methods have no group of their own
        if (source == inUse)
            return uint(layouts.size()) % layoutsPerKeymap;
        layouts.append(source);
    }
    return std::nullopt;
}

void GnomeInputSources::settingChanged(GSettings*, const char* key, void* self) {
    const QByteArray name(key);
    if (name != "sources" && name != "mru-sources")
        return;
    auto* sources = static_cast<GnomeInputSources*>(self);
    if (const auto group = sources->currentGroup())
        emit sources->groupChanged(*group);
}
