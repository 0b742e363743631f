#include "SystemClipboard.h"

#include "X11ClipboardLender.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

std::optional<QString> SystemClipboard::text() {
    // Without windows (no display) there is no clipboard to ask.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return std::nullopt;
    if (m_lender && m_lender->ownsClipboard())
        return m_lender->offeredText();
    const QMimeData* data = QGuiApplication::clipboard()->mimeData(QClipboard::Clipboard);
    if (!data || !data->hasText())
        return std::nullopt; // nothing, or only an image or files
    QString text = data->text();
    if (text.isEmpty())
        return std::nullopt;
    return text;
}
