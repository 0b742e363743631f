#include "SystemClipboard.h"

#include "X11ClipboardLender.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

void SystemClipboard::readText(TextHandler done) {
    if (m_lender && m_lender->ownsClipboard()) {
        done(m_lender->offeredText());
        return;
    }
    if (m_reader) {
        m_reader->readText(std::move(done));
        return;
    }
    // Without windows (no display) there is no clipboard to ask.
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
