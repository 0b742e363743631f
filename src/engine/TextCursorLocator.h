#pragma once

#include <QObject>
#include <QRect>
#include <functional>
#include <optional>

// Where the text cursor of the focused text field is on the screen, for windows that open next
// to what the user is writing. Only its place is asked for, never the text around it.
class TextCursorLocator {
public:
    using Answer = std::function<void(std::optional<QRect> cursor)>;

    virtual ~TextCursorLocator() = default;

    // Asks for the text cursor's rectangle (desktop coordinates). `answered` is called once,
    // with nothing when the place cannot be told: at once, or from the event loop within
    // answerDeadlineMs, so that whatever waits for it never waits long. It is not called when
    // `context` is gone by then.
    virtual void locate(QObject* context, Answer answered) = 0;

    static constexpr int answerDeadlineMs = 50;
};
