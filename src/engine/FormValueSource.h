#pragma once

#include <QHash>
#include <QString>
#include <functional>

struct Snippet;

// Where a content's form fields get their values: the application shows a form for them and
// answers once it is done. The engine waits without blocking; the form's keys never reach it
// as typing.
class FormValueSource {
public:
    virtual ~FormValueSource() = default;

    struct Answer {
        enum class Outcome {
            Filled,    // the content goes out with `values`
            Dismissed, // nothing goes out: the command is put back as it was typed
            FocusLost, // the window typed in did not get the focus back: nothing is typed there
        };
        Outcome outcome = Outcome::Dismissed;
        QHash<QString, QString> values; // by field name
        bool dismissed = false;         // FocusLost: the form was dismissed, not filled
    };
    using AnswerHandler = std::function<void(const Answer&)>;

    // What the engine is told of the form's hold on the keyboard: `focused` once the form has
    // the focus (keys typed from then on are the form's), `leaving` once it is done, before the
    // focus goes back (keys typed from then on wait for the answer's output). Until `focused`
    // the engine keeps the user's keys from every window.
    struct FocusHandlers {
        std::function<void()> focused;
        std::function<void()> leaving;
    };
    virtual void setFocusHandlers(FocusHandlers handlers) = 0;

    // Asks for the values of `snippet`'s form fields; the command is already erased. `answered`
    // runs once, later, from the event loop, with the focus back in the window typed in.
    virtual void askValues(const Snippet& snippet, AnswerHandler answered) = 0;

    // After a dismissal whose focus did not come back: `typed` (the command and the keys that
    // followed it) could not be put back where it was typed; the user is handed it another way.
    virtual void keepForUser(const QString& typed) = 0;
};
