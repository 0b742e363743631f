#pragma once

#include "PermissionAlertPresenter.h"

#include <QUrl>
#include <functional>

// The guidance as a modal warning with "Open Help" (the default) and "Later".
class MessageBoxPermissionAlert : public PermissionAlertPresenter {
public:
    using UrlOpener = std::function<bool(const QUrl&)>;

    // `opener` defaults to the desktop's handler for the URL.
    explicit MessageBoxPermissionAlert(UrlOpener opener = {});

    void showPermissionAlert(const QString& title, const QString& message,
                             const QString& helpUrl) override;

    // A qrc: page cannot be opened by a browser; it is copied to a file first.
    static QUrl openableUrl(const QUrl& url);

    static constexpr int firstButtonResponse = 1000;

private:
    UrlOpener m_opener;
};
