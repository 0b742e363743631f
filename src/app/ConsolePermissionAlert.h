#pragma once

#include "PermissionAlertPresenter.h"

// Without a display there is no window to show: the guidance goes to standard error.
class ConsolePermissionAlert : public PermissionAlertPresenter {
public:
    void showPermissionAlert(const QString& title, const QString& message,
                             const QString& helpUrl) override;
};
