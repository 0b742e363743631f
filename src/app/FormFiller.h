#pragma once

#include "FocusReturn.h"
#include "FormValueSource.h"
#include "Snippet.h"

#include <QObject>

class FillInForm;
class WindowFocus;

// Answers the engine's question for a content's form fields: opens the fill-in form over the
// window the user was typing in (the command is erased by then), and once the form is done
// gives the focus back to that window before answering, so that the content, or the command
// put back after Escape, is typed there. Where the focus does not come back, nothing is typed:
// a filled content goes to the clipboard instead and the form opens again to say so.
class FormFiller : public QObject, public FormValueSource {
    Q_OBJECT
public:
    // `focus` may be null (Wayland): see FocusReturn.
    FormFiller(FillInForm& form, WindowFocus* focus, QObject* parent = nullptr);

    void askValues(const Snippet& snippet, AnswerHandler answered) override;

signals:
    // The filled content went to the clipboard, as the focus did not come back.
    void copiedInstead(const Snippet& snippet);

private:
    void answer(const Answer& given);

    FillInForm& m_form;
    FocusReturn m_focusReturn;
    Snippet m_snippet;
    AnswerHandler m_answered;
};
