#include "FormFiller.h"

#include "FillInForm.h"
#include "Logging.h"
#include "PlaceholderText.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

FormFiller::FormFiller(FillInForm& form, WindowFocus* focus, QObject* parent)
    : QObject(parent), m_form(form), m_focusReturn(focus) {
    connect(&m_form, &FillInForm::filled, this, [this](const QHash<QString, QString>& values) {
        answer(Answer{Answer::Outcome::Filled, values});
    });
    connect(&m_form, &FillInForm::dismissed, this,
            [this] { answer(Answer{Answer::Outcome::Dismissed, {}}); });
}

void FormFiller::askValues(const Snippet& snippet, AnswerHandler answered) {
    m_snippet = snippet;
    m_answered = std::move(answered);
    m_focusReturn.rememberFocused();
    m_form.present(snippet, m_focusReturn.rememberedFrame());
}

void FormFiller::answer(const Answer& given) {
    if (!m_answered)
        return;
    m_focusReturn.giveBack([this, given](bool returned) {
        AnswerHandler answered = std::exchange(m_answered, {});
        if (!answered)
            return;
        if (returned) {
            answered(given);
            return;
        }
        answered(Answer{Answer::Outcome::FocusLost, {}});
        if (given.outcome != Answer::Outcome::Filled) {
            qCWarning(lcApp).noquote()
                << QStringLiteral("The focus did not come back: the command was not put back");
            return;
        }
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
