#pragma once

#include <QString>
#include <functional>
#include <optional>

// The clipboard as a snippet's content reads it when it is typed. On X11 the application's
// clipboard (the CLIPBOARD selection); tests use a fake.
class ClipboardSource {
public:
    virtual ~ClipboardSource() = default;

    using TextHandler = std::function<void(std::optional<QString>)>;
    // Asks for the clipboard's text; `done` gets it, or none when it is empty, holds no text
    // (only an image) or its owner did not answer in time (the source says why). `done` may run
    // at once or later from the event loop; nothing waits for the owner meanwhile.
    virtual void readText(TextHandler done) = 0;
};
