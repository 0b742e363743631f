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
    };
    using AnswerHandler = std::function<void(const Answer&)>;

    // Asks for the values of `snippet`'s form fields; the command is already erased. `answered`
    // runs once, later, from the event loop, with the focus back in the window typed in.
    virtual void askValues(const Snippet& snippet, AnswerHandler answered) = 0;
};
