#include "X11ClipboardReader.h"

#include "Logging.h"
#include "X11ClipboardLender.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <climits>

X11ClipboardReader::X11ClipboardReader(const X11ClipboardLender* lender, QObject* parent)
    : QObject(parent), m_lender(lender) {
    m_timeout.setSingleShot(true);
    m_timeout.setInterval(answerTimeoutMs);
    connect(&m_timeout, &QTimer::timeout, this, [this] {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("The clipboard's owner did not answer within %1 ms: a clipboard "
                              "placeholder typed nothing")
                   .arg(answerTimeoutMs);
        finish(std::nullopt);
    });
}

X11ClipboardReader::~X11ClipboardReader() = default;

bool X11ClipboardReader::open() {
    if (display())
        return true;
    if (!m_connection.open([this] { readEvents(); }))
        return false;
    m_clipboard = XInternAtom(display(), "CLIPBOARD", False);
    m_utf8 = XInternAtom(display(), "UTF8_STRING", False);
    m_incr = XInternAtom(display(), "INCR", False);
    m_targets = XInternAtom(display(), "TARGETS", False);
    m_textPlainUtf8 = XInternAtom(display(), "text/plain;charset=utf-8", False);
    m_property = XInternAtom(display(), "TYPOLET_CLIPBOARD_TEXT", False);
    return true;
}

void X11ClipboardReader::readText(TextHandler done) {
    if (m_lender && m_lender->ownsClipboard()) {
        done(m_lender->offeredText());
        return;
    }
    if (!open()) {
        done(std::nullopt);
        return;
    }
    m_waiting.append(std::move(done));
    if (m_waiting.size() > 1)
        return; // asked already
    m_incoming = false;
    m_received.clear();
    // The formats first: some owners hand over whatever they hold for any format asked for,
    // an image as "text" too.
    m_asking = m_targets;
    XDeleteProperty(display(), window(), m_property);
    XConvertSelection(display(), m_clipboard, m_targets, m_property, window(), CurrentTime);
    XFlush(display());
    m_timeout.start();
    // An answer that Xlib has read already does not wake the notifier.
    QMetaObject::invokeMethod(this, [this] { readEvents(); }, Qt::QueuedConnection);
}

bool X11ClipboardReader::takeProperty(QByteArray& bytes, unsigned long& type) {
    Atom actualType = None;
    int format = 0;
    unsigned long items = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display(), window(), m_property, 0, LONG_MAX / 4, True,
                           AnyPropertyType, &actualType, &format, &items, &after,
                           &data) != Success ||
        actualType == None) {
        if (data)
            XFree(data);
        return false;
    }
    type = actualType;
    const qsizetype itemSize = format == 32 ? qsizetype(sizeof(long)) : format == 16 ? 2 : 1;
    bytes = QByteArray(reinterpret_cast<const char*>(data), qsizetype(items) * itemSize);
    XFree(data);
    return true;
}

void X11ClipboardReader::readEvents() {
    while (display() && XPending(display()) > 0) {
        XEvent event;
        XNextEvent(display(), &event);
        if (m_waiting.isEmpty())
            continue; // the answer to a question given up on
        if (event.type == SelectionNotify && event.xselection.selection == m_clipboard &&
            !m_incoming) {
            QByteArray bytes;
            unsigned long type = 0;
            if (event.xselection.property == None || !takeProperty(bytes, type)) {
                finish(std::nullopt); // no owner, or no text among its formats
            } else if (m_asking == m_targets) {
                askForText(bytes);
            } else if (type == m_incr) {
                m_incoming = true; // deleting the property asked for the first increment
                m_timeout.start();
            } else {
                finish(decoded(bytes));
            }
        } else if (event.type == PropertyNotify && m_incoming &&
                   event.xproperty.atom == m_property &&
                   event.xproperty.state == PropertyNewValue) {
            QByteArray bytes;
            unsigned long type = 0;
            if (!takeProperty(bytes, type))
                continue;
            if (bytes.isEmpty()) {
                finish(decoded(m_received)); // the empty increment ends it
            } else {
                m_received += bytes;
                m_timeout.start(); // each increment has the same time to come
            }
        }
    }
}

void X11ClipboardReader::askForText(const QByteArray& targets) {
    // Format-32 items come as longs.
    const auto* atoms = reinterpret_cast<const long*>(targets.constData());
    const qsizetype count = targets.size() / qsizetype(sizeof(long));
    m_asking = 0;
    for (const unsigned long wanted : {m_utf8, m_textPlainUtf8, static_cast<unsigned long>(XA_STRING)}) {
        for (qsizetype i = 0; i < count && m_asking == 0; ++i)
            if (static_cast<unsigned long>(atoms[i]) == wanted)
                m_asking = wanted;
    }
    if (m_asking == 0) {
        finish(std::nullopt); // only an image, files or the like
        return;
    }
    XConvertSelection(display(), m_clipboard, m_asking, m_property, window(), CurrentTime);
    XFlush(display());
}

std::optional<QString> X11ClipboardReader::decoded(const QByteArray& bytes) const {
    return m_asking == XA_STRING ? QString::fromLatin1(bytes) : QString::fromUtf8(bytes);
}

void X11ClipboardReader::finish(std::optional<QString> text) {
    m_timeout.stop();
    m_incoming = false;
    m_received.clear();
    if (text && text->isEmpty())
        text.reset();
    const QList<TextHandler> waiting = std::exchange(m_waiting, {});
    for (const TextHandler& done : waiting)
        done(text);
}
