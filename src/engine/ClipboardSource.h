#pragma once

#include <QString>
#include <optional>

// The clipboard as a snippet's content reads it when it is typed. On X11 the application's
// clipboard (the CLIPBOARD selection); tests use a fake.
class ClipboardSource {
public:
    virtual ~ClipboardSource() = default;

    // The clipboard's text now; none when it is empty or holds no text (only an image).
    virtual std::optional<QString> text() = 0;
};
