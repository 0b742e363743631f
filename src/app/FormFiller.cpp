#include "FormFiller.h"

#include "FillInForm.h"
#include "Logging.h"
#include "PlaceholderText.h"
#include "TextCursorLocator.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QWindow>

FormFiller::FormFiller(FillInForm& form, WindowFocus* focus, TextCursorLocator* cursor,
                       QObject* parent)
    : QObject(parent), m_form(form), m_focusReturn(focus), m_cursor(cursor) {
    connect(&m_form, &FillInForm::filled, this, [this](const QHash<QString, QString>& values) {
        answer(Answer{Answer::Outcome::Filled, values});
    });
    connect(&m_form, &FillInForm::dismissed, this,
            [this] { answer(Answer{Answer::Outcome::Dismissed, {}}); });
    m_focusPatience.setSingleShot(true);
    m_focusPatience.setInterval(FocusReturn::focusPatienceMs);
    connect(&m_focusPatience, &QTimer::timeout, this, [this] {
        qCWarning(lcApp).noquote()
            << QStringLiteral("The fill-in form did not get the focus in time");
        formFocused();
    });
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow* window) {
        if (window && window == m_form.windowHandle())
            formFocused();
    });
}

void FormFiller::askValues(const Snippet& snippet, AnswerHandler answered) {
    m_snippet = snippet;
    m_answered = std::move(answered);
    m_focusReturn.rememberFocused();
    m_focusTold = false;
    const QRect frame = m_focusReturn.rememberedFrame();
    auto show = [this, snippet, frame](std::optional<QRect> cursor) {
        m_form.present(snippet, frame, cursor.value_or(QRect()));
        if (QGuiApplication::focusWindow() &&
            QGuiApplication::focusWindow() == m_form.windowHandle())
            formFocused();
        else
            m_focusPatience.start();
    };
    if (m_cursor)
        m_cursor->locate(this, show);
    else
        show(std::nullopt);
}

void FormFiller::formFocused() {
    m_focusPatience.stop();
    if (std::exchange(m_focusTold, true) || !m_focusHandlers.focused)
        return;
    m_focusHandlers.focused();
}

void FormFiller::answer(const Answer& given) {
    if (!m_answered)
        return;
    formFocused(); // answered before the focus was seen: the keys are let go first
    if (m_focusHandlers.leaving)
        m_focusHandlers.leaving();
    m_focusReturn.giveBack([this, given](bool returned) {
        AnswerHandler answered = std::exchange(m_answered, {});
        if (!answered)
            return;
        if (returned) {
            answered(given);
            return;
        }
        // A dismissal's command comes back through keepForUser().
        answered(Answer{Answer::Outcome::FocusLost, {}, given.outcome != Answer::Outcome::Filled});
        if (given.outcome != Answer::Outcome::Filled)
            return;
        // Typed into whatever has the focus now, the content could land anywhere.
        const PlaceholderText placeholders(m_snippet.content);
        std::optional<QString> clipboard;
        if (const QMimeData* data = QGuiApplication::clipboard()->mimeData();
            data && data->hasText() && placeholders.uses(PlaceholderText::Kind::Clipboard))
            clipboard = data->text();
        QGuiApplication::clipboard()->setText(
            placeholders.render(QDateTime::currentDateTime(), clipboard, QLocale(), given.values)
                .text);
        qCWarning(lcApp).noquote()
            << QStringLiteral("The focus did not come back: the snippet went to the clipboard");
        m_form.showNote(tr("Typolet could not return to the window you were typing in. "
                           "The snippet “%1” is on the clipboard: paste it there.")
                            .arg(m_snippet.command));
        emit copiedInstead(m_snippet);
    });
}

void FormFiller::keepForUser(const QString& typed) {
    // Typed into whatever has the focus now, it could land anywhere; lost, the user would not
    // know what had been erased.
    QGuiApplication::clipboard()->setText(typed);
    qCWarning(lcApp).noquote() << QStringLiteral(
        "The focus did not come back: the erased command went to the clipboard");
    m_form.showNote(tr("Typolet could not return to the window you were typing in. "
                       "What you typed, “%1”, is on the clipboard: paste it there.")
                        .arg(typed));
}
