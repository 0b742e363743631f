#pragma once

#include "FocusedApplication.h"

// The application and window that have the focus, as the test sets them.
class FakeFocusedApplication : public FocusedApplication {
public:
    QString name() override { return application; }
    quint64 window() override { return focusedWindow; }
    QString application;
    quint64 focusedWindow = 1;
};
