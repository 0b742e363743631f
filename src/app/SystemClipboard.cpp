#include "SystemClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

void SystemClipboard::readText(TextHandler done) {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        done(std::nullopt);
        return;
    }
    const QMimeData* data = QGuiApplication::clipboard()->mimeData(QClipboard::Clipboard);
    if (!data || !data->hasText() || data->text().isEmpty()) {
        done(std::nullopt); // nothing, or only an image or files
        return;
    }
    done(data->text());
}
