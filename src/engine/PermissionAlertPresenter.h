#pragma once

#include <QString>

// Shows the permission guidance to the user. The desktop shows a modal alert; without a display
// the text goes to the terminal.
class PermissionAlertPresenter {
public:
    virtual ~PermissionAlertPresenter() = default;

    // `helpUrl` is what the first button opens.
    virtual void showPermissionAlert(const QString& title, const QString& message,
                                     const QString& helpUrl) = 0;
};
