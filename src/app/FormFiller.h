#pragma once

#include "FocusReturn.h"
#include "FormValueSource.h"
#include "Snippet.h"

#include <QObject>
#include <QTimer>

class FillInForm;
class TextCursorLocator;
class WindowFocus;

// Answers the engine's question for a content's form fields: opens the fill-in form over the
// window the user was typing in (the command is erased by then), and once the form is done
// gives the focus back to that window before answering, so that the content, or the command
// put back after Escape, is typed there. Where the focus does not come back, nothing is typed:
// a filled content, or the command of a dismissed form, goes to the clipboard instead and the
// form opens again to say so.
//
// The engine holds the user's keys until the form has the focus, and again from the moment
// it is done: it is told both.
class FormFiller : public QObject, public FormValueSource {
    Q_OBJECT
public:
    // `focus` may be null (Wayland): see FocusReturn. `cursor`, where not null, tells where the
    // text cursor is, so that the form opens below it, where the insert window does.
    FormFiller(FillInForm& form, WindowFocus* focus, TextCursorLocator* cursor = nullptr,
               QObject* parent = nullptr);

    void askValues(const Snippet& snippet, AnswerHandler answered) override;
    void setFocusHandlers(FocusHandlers handlers) override {
        m_focusHandlers = std::move(handlers);
    }
    void keepForUser(const QString& typed) override;

signals:
    // The filled content went to the clipboard, as the focus did not come back.
    void copiedInstead(const Snippet& snippet);

private:
    void answer(const Answer& given);
    // Tells the engine, once per form, that the form has the focus (or could not get it in
    // time: the keys are not held any longer than that).
    void formFocused();

    FillInForm& m_form;
    FocusReturn m_focusReturn;
    TextCursorLocator* m_cursor;
    Snippet m_snippet;
    AnswerHandler m_answered;
    FocusHandlers m_focusHandlers;
    QTimer m_focusPatience;
    bool m_focusTold = true;
};
