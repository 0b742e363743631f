#include "SnippetInserter.h"

#include "InsertSnippetWindow.h"
#include "Logging.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

SnippetInserter::SnippetInserter(InsertSnippetWindow& window, WindowFocus* focus,
                                 std::function<void(const Snippet&)> send, QObject* parent)
    : QObject(parent), m_window(window), m_send(std::move(send)), m_focusReturn(focus) {
    connect(&m_window, &InsertSnippetWindow::insertRequested, this, &SnippetInserter::send);
    connect(&m_window, &InsertSnippetWindow::dismissed, this,
            [this] { m_focusReturn.giveBack([](bool) {}); });
    connect(&m_window, &InsertSnippetWindow::copied, this,
            [this](const Snippet&) { m_focusReturn.giveBack([](bool) {}); });
}

void SnippetInserter::open() {
    if (m_window.isVisible()) {
        m_window.present(m_window.frameGeometry());
        return;
    }
    m_focusReturn.rememberFocused();
    m_window.present(m_focusReturn.rememberedFrame());
}

void SnippetInserter::send(const Snippet& snippet) {
    m_focusReturn.giveBack([this, snippet](bool returned) {
        if (returned) {
            m_send(snippet);
            return;
        }
        // Typed into whatever has the focus now, the content could land anywhere.
        const QString text = InsertSnippetWindow::filledContent(snippet, std::nullopt);
        QGuiApplication::clipboard()->setText(text);
        qCWarning(lcApp).noquote()
            << QStringLiteral("The focus did not come back: the snippet went to the clipboard");
        m_window.present();
        m_window.showNote(tr("Typolet could not return to the window you were typing in. "
                             "The snippet “%1” is on the clipboard: paste it there.")
                              .arg(snippet.command));
        emit copiedInstead(snippet);
    });
}
