#include "SnippetInserter.h"

#include "InsertSnippetWindow.h"
#include "Logging.h"
#include "WindowFocus.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

SnippetInserter::SnippetInserter(InsertSnippetWindow& window, WindowFocus* focus,
                                 std::function<void(const Snippet&)> send, QObject* parent)
    : QObject(parent), m_window(window), m_focus(focus), m_send(std::move(send)) {
    m_retry.setInterval(focusRetryMs);
    connect(&m_retry, &QTimer::timeout, this, [this] {
        m_waitedMs += focusRetryMs;
        const bool returned = m_focus->focusedWindow() == m_target;
        if (!returned && m_waitedMs < focusPatienceMs) {
            m_focus->focus(m_target); // a window manager may have been busy: ask again
            return;
        }
        m_retry.stop();
        if (auto then = std::exchange(m_then, {}))
            then(returned);
    });
    connect(&m_window, &InsertSnippetWindow::insertRequested, this, &SnippetInserter::send);
    connect(&m_window, &InsertSnippetWindow::dismissed, this,
            [this] { giveFocusBack([](bool) {}); });
    connect(&m_window, &InsertSnippetWindow::copied, this,
            [this](const Snippet&) { giveFocusBack([](bool) {}); });
}

void SnippetInserter::open() {
    if (m_window.isVisible()) {
        m_window.present(m_window.frameGeometry());
        return;
    }
    m_retry.stop();
    m_then = {};
    m_target = m_focus ? m_focus->focusedWindow() : 0;
    m_window.present(m_focus ? m_focus->frameOf(m_target) : QRect());
}

void SnippetInserter::giveFocusBack(std::function<void(bool returned)> then) {
    if (!m_focus) {
        QTimer::singleShot(unverifiedFocusMs, this, [then] { then(true); });
        return;
    }
    if (m_target == 0) {
        // Nothing had the focus (an empty desktop): wherever it goes now is where the user is.
        then(true);
        return;
    }
    m_then = std::move(then);
    m_waitedMs = 0;
    m_focus->focus(m_target);
    m_retry.start();
}

void SnippetInserter::send(const Snippet& snippet) {
    giveFocusBack([this, snippet](bool returned) {
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
