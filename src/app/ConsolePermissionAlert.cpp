#include "ConsolePermissionAlert.h"

#include <cstdio>

void ConsolePermissionAlert::showPermissionAlert(const QString& title, const QString& message,
                                                 const QString& helpUrl) {
    Q_UNUSED(helpUrl); // a resource path means nothing in a terminal
    const QByteArray text = (title + QStringLiteral("\n") + message + QStringLiteral("\n")).toUtf8();
    std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stderr);
    std::fflush(stderr);
}
