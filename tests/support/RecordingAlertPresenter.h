#pragma once

#include "PermissionAlertPresenter.h"

#include <QList>

// Records every alert it was asked to show.
class RecordingAlertPresenter : public PermissionAlertPresenter {
public:
    struct Alert {
        QString title;
        QString message;
        QString helpUrl;
    };
    void showPermissionAlert(const QString& title, const QString& message,
                             const QString& helpUrl) override {
        alerts.append({title, message, helpUrl});
    }
    QList<Alert> alerts;
};
