#include "FocusReturn.h"

#include "WindowFocus.h"

FocusReturn::FocusReturn(WindowFocus* focus, QObject* parent) : QObject(parent), m_focus(focus) {
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
}

void FocusReturn::rememberFocused() {
    m_retry.stop();
    m_then = {};
    m_target = m_focus ? m_focus->focusedWindow() : 0;
}

QRect FocusReturn::rememberedFrame() const {
    return m_focus ? m_focus->frameOf(m_target) : QRect();
}

void FocusReturn::giveBack(std::function<void(bool returned)> then) {
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
