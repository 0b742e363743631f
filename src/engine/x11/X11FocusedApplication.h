#pragma once

#include "FocusedApplication.h"

typedef struct _XDisplay Display;

// The class of the window that has the X input focus, or of its nearest ancestor that has
// one (toolkits often focus a child of the window the window manager knows). A connection of
// its own, opened at the first question.
class X11FocusedApplication : public FocusedApplication {
public:
    ~X11FocusedApplication() override;
    QString name() override;
    quint64 window() override;

private:
    bool connect();

    Display* m_display = nullptr;
};
