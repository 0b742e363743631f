#pragma once

#include <QObject>
#include <optional>

typedef struct _GSettings GSettings;

// Which of the desktop's layouts GNOME has in use. GNOME keeps it in its settings rather than
// announcing it: the input sources in order (`sources`), and the ones used most recently first
// (`mru-sources`), whose first entry is the one in use. The compositor's keymap holds the
// layout sources in the order of `sources`, so the one in use is a group of that keymap.
//
// Read through GSettings, whose change notifications arrive in the event loop Qt shares with
// GLib. Outside GNOME (no such settings schema) it reports nothing.
class GnomeInputSources : public QObject {
    Q_OBJECT
public:
    explicit GnomeInputSources(QObject* parent = nullptr);
    ~GnomeInputSources() override;

    bool isAvailable() const { return m_settings != nullptr; }
    // The group of the layout in use; none when it is not a layout (an input method) or unknown.
    std::optional<uint> currentGroup() const;

signals:
    void groupChanged(uint group);

private:
    static void settingChanged(GSettings* settings, const char* key, void* self);

    GSettings* m_settings = nullptr;
    unsigned long m_handler = 0;
};
