#include "X11ClipboardLender.h"

#include "Logging.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xlibint.h> // the connection's resource mask; it defines min() and max() macros
#include <algorithm>
#include <climits>

namespace {
// An idle incremental transfer is given up after this long (its requestor went away).
constexpr int transferGiveUpMs = 10000;
} // namespace

X11ClipboardLender::X11ClipboardLender(QObject* parent) : QObject(parent) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (m_phase == Phase::Stamping || m_phase == Phase::Saving) {
            saveFailed(QStringLiteral("the clipboard's owner did not hand over its content in time"));
        } else if (m_phase == Phase::Lent) {
            qCWarning(lcEngine).noquote()
                << QStringLiteral("No application asked for the pasted text within %1 ms; the "
                                  "clipboard holds its earlier content again")
                       .arg(takeTimeoutMs);
            finishLoan();
        }
    });
}

X11ClipboardLender::~X11ClipboardLender() {
    if (display() && m_phase == Phase::Lent && m_owner && !m_hadOwner)
        XSetSelectionOwner(display(), m_clipboard, None, m_time);
}

bool X11ClipboardLender::open() {
    if (display())
        return true;
    // Its window owns the selection and receives the transfers.
    if (!m_connection.open([this] { readEvents(); }))
        return false;
    const char* names[] = {"CLIPBOARD",
                           "TARGETS",
                           "TIMESTAMP",
                           "MULTIPLE",
                           "INCR",
                           "UTF8_STRING",
                           "TEXT",
                           "text/plain;charset=utf-8",
                           "x-kde-passwordManagerHint",
                           "TYPOLET_TRANSFER",
                           "TYPOLET_TIMESTAMP",
                           "SAVE_TARGETS",
                           "DELETE",
                           "INSERT_SELECTION",
                           "INSERT_PROPERTY"};
    constexpr int count = sizeof names / sizeof names[0];
    Atom atoms[count] = {};
    XInternAtoms(display(), const_cast<char**>(names), count, False, atoms);
    unsigned long* fields[] = {&m_clipboard,  &m_targets, &m_timestamp,     &m_multiple,
                               &m_incr,       &m_utf8,    &m_text,          &m_textPlainUtf8,
                               &m_passwordHint, &m_transferProperty, &m_stampProperty};
    int i = 0;
    for (unsigned long* field : fields)
        *field = atoms[i++];
    m_notSaved = {m_targets, m_timestamp, m_multiple};
    for (; i < count; ++i)
        m_notSaved.append(atoms[i]);
    // Larger values go in increments; leave room for the request's own header.
    m_maxPropertyBytes = qsizetype(XMaxRequestSize(display())) * 4 - 256;
    // Every client's windows share the bits outside the mask the server gave each connection.
    m_resourceMask = display()->resource_mask;
    return true;
}

void X11ClipboardLender::lend(const QString& text, std::function<void(bool)> ready,
                              std::function<void(bool)> returned) {
    if (m_phase != Phase::Idle || !open()) {
        QMetaObject::invokeMethod(this, [ready] { ready(false); }, Qt::QueuedConnection);
        return;
    }
    m_lentText = text;
    m_ready = std::move(ready);
    m_returned = std::move(returned);
    m_lostWhileLent = false;
    m_managerTook = false;
    m_askedForLentText.clear();
    m_taken = false;
    Window focus = None;
    int revertTo = 0;
    XGetInputFocus(display(), &focus, &revertTo);
    m_focusClient = focus > PointerRoot ? focus & ~m_resourceMask : 0;
    // Selections want a real server time: appending nothing to a property of our own window
    // brings one back in the PropertyNotify.
    m_phase = Phase::Stamping;
    XChangeProperty(display(), window(), m_stampProperty, XA_STRING, 8, PropModeAppend, nullptr,
                    0);
    XFlush(display());
    m_timer.start(saveTimeoutMs);
    QMetaObject::invokeMethod(this, [this] { readEvents(); }, Qt::QueuedConnection);
}

void X11ClipboardLender::giveBack() {
    if (m_phase == Phase::Lent)
        finishLoan();
}

void X11ClipboardLender::readEvents() {
    // Round trips made while handling one event may queue others: read until none is left.
    while (display() && XPending(display()) > 0) {
        XEvent event;
        XNextEvent(display(), &event);
        process(event);
    }
}

void X11ClipboardLender::process(XEvent& event) {
    switch (event.type) {
    case PropertyNotify: {
        const XPropertyEvent& property = event.xproperty;
        if (property.window == window()) {
            if (property.atom == m_stampProperty && m_phase == Phase::Stamping) {
                startSaving(property.time);
            } else if (property.atom == m_transferProperty && property.state == PropertyNewValue &&
                       m_incoming) {
                Value chunk;
                if (!readProperty(m_transferProperty, chunk)) {
                    saveFailed(QStringLiteral("a clipboard format could not be read"));
                } else if (chunk.bytes.isEmpty()) {
                    m_incoming = false;
                    fetched(m_incomingValue);
                } else {
                    m_incomingValue.type = chunk.type;
                    m_incomingValue.format = chunk.format;
                    m_incomingValue.bytes += chunk.bytes;
                    if (m_savedBytes + m_incomingValue.bytes.size() > maxSavedBytes)
                        saveFailed(QStringLiteral("the clipboard holds too much to keep aside"));
                    else
                        m_timer.start(saveTimeoutMs);
                }
            }
            return;
        }
        if (property.state != PropertyDelete)
            return;
        for (qsizetype i = 0; i < m_transfers.size(); ++i) {
            Transfer& transfer = m_transfers[i];
            if (transfer.window == property.window && transfer.property == property.atom) {
                sendNextIncrement(transfer);
                if (transfer.sent < 0) // done
                    m_transfers.removeAt(i);
                return;
            }
        }
        return;
    }
    case SelectionNotify: {
        const XSelectionEvent& notify = event.xselection;
        if (m_phase != Phase::Saving || notify.requestor != window() ||
            notify.selection != m_clipboard || notify.target != m_fetching || m_incoming)
            return;
        if (notify.property == None) {
            if (m_fetching == m_targets) {
                saveFailed(QStringLiteral("the clipboard's owner does not list its formats"));
                return;
            }
            fetchNext(); // offered but refused: it is not offered back either
            return;
        }
        Value value;
        if (!readProperty(notify.property, value)) {
            saveFailed(QStringLiteral("a clipboard format could not be read"));
            return;
        }
        if (value.type == m_incr) {
            // The rest comes in pieces, each announced by a new value of the property.
            m_incoming = true;
            m_incomingValue = {};
            m_timer.start(saveTimeoutMs);
            return;
        }
        fetched(value);
        return;
    }
    case SelectionRequest:
        serve(event);
        return;
    case SelectionClear: {
        if (event.xselectionclear.selection != m_clipboard)
            return;
        m_owner = false;
        m_offered.clear();
        const Window owner = XGetSelectionOwner(display(), m_clipboard);
        if (owner != None && m_askedForLentText.removeAll(owner & ~m_resourceMask) > 0) {
            // A clipboard manager keeping what it copied from us, the lent text: the user's
            // content comes back once the loan is over.
            if (m_phase == Phase::Lent)
                m_managerTook = true;
            else
                ownUserContentAgain();
            return;
        }
        // Another program put something on the clipboard: that is the user's now.
        m_askedForLentText.clear();
        m_userContent.clear();
        if (m_phase == Phase::Lent)
            m_lostWhileLent = true;
        return;
    }
    default:
        return;
    }
}

void X11ClipboardLender::startSaving(unsigned long time) {
    m_time = time;
    m_saved.clear();
    m_savedBytes = 0;
    m_incoming = false;
    const Window owner = XGetSelectionOwner(display(), m_clipboard);
    if (owner == window() && m_owner) {
        // We still answer for what the user had before the last paste.
        m_hadOwner = true;
        m_saved = m_offered;
        own();
        return;
    }
    m_hadOwner = owner != None;
    if (!m_hadOwner) {
        own();
        return;
    }
    m_phase = Phase::Saving;
    m_toFetch.clear();
    m_fetching = m_targets;
    XConvertSelection(display(), m_clipboard, m_targets, m_transferProperty, window(), m_time);
    XFlush(display());
}

void X11ClipboardLender::fetched(const Value& value) {
    if (m_fetching == m_targets) {
        if (value.format != 32) {
            saveFailed(QStringLiteral("the clipboard's owner does not list its formats"));
            return;
        }
        const auto* atoms = reinterpret_cast<const long*>(value.bytes.constData());
        const qsizetype count = value.bytes.size() / qsizetype(sizeof(long));
        for (qsizetype i = 0; i < count; ++i) {
            const auto atom = static_cast<unsigned long>(atoms[i]);
            if (atom != None && !m_notSaved.contains(atom) && !m_toFetch.contains(atom))
                m_toFetch.append(atom);
        }
    } else {
        m_savedBytes += value.bytes.size();
        if (m_savedBytes > maxSavedBytes) {
            saveFailed(QStringLiteral("the clipboard holds too much to keep aside"));
            return;
        }
        m_saved.append({m_fetching, value});
    }
    fetchNext();
}

void X11ClipboardLender::fetchNext() {
    if (m_toFetch.isEmpty()) {
        own();
        return;
    }
    m_fetching = m_toFetch.takeFirst();
    m_timer.start(saveTimeoutMs);
    XConvertSelection(display(), m_clipboard, m_fetching, m_transferProperty, window(), m_time);
    XFlush(display());
}

void X11ClipboardLender::saveFailed(const QString& reason) {
    m_timer.stop();
    m_phase = Phase::Idle;
    m_incoming = false;
    m_saved.clear();
    m_lentText.clear();
    qCWarning(lcEngine).noquote() << QStringLiteral("Cannot paste: %1").arg(reason);
    if (auto ready = std::exchange(m_ready, {}))
        QMetaObject::invokeMethod(this, [ready] { ready(false); }, Qt::QueuedConnection);
    m_returned = {};
}

void X11ClipboardLender::own() {
    const QByteArray utf8 = m_lentText.toUtf8();
    m_offered = {{m_utf8, {m_utf8, 8, utf8}},
                 {m_textPlainUtf8, {m_textPlainUtf8, 8, utf8}},
                 {m_text, {m_utf8, 8, utf8}},
                 {XA_STRING, {XA_STRING, 8, m_lentText.toLatin1()}},
                 {m_passwordHint, {m_passwordHint, 8, QByteArrayLiteral("secret")}}};
    XSetSelectionOwner(display(), m_clipboard, window(), m_time);
    if (XGetSelectionOwner(display(), m_clipboard) != window()) {
        m_owner = false;
        m_offered.clear();
        saveFailed(QStringLiteral("another program keeps the clipboard"));
        return;
    }
    m_owner = true;
    m_phase = Phase::Lent;
    m_timer.start(takeTimeoutMs);
    if (auto ready = std::exchange(m_ready, {}))
        QMetaObject::invokeMethod(this, [ready] { ready(true); }, Qt::QueuedConnection);
}

void X11ClipboardLender::finishLoan() {
    m_timer.stop();
    m_phase = Phase::Idle;
    m_lentText.clear();
    m_userContent = m_hadOwner ? std::exchange(m_saved, {}) : Formats();
    if (m_managerTook && !m_lostWhileLent) {
        ownUserContentAgain();
    } else if (m_owner && !m_lostWhileLent) {
        if (m_hadOwner) {
            // Owned again, so that a clipboard manager sees the user's content come back.
            m_offered = m_userContent;
            XSetSelectionOwner(display(), m_clipboard, window(), m_time);
        } else {
            m_offered.clear();
            m_owner = false;
            XSetSelectionOwner(display(), m_clipboard, None, m_time);
        }
        XFlush(display());
    }
    m_saved.clear();
    if (auto returned = std::exchange(m_returned, {}))
        QMetaObject::invokeMethod(this, [returned, taken = m_taken] { returned(taken); },
                                  Qt::QueuedConnection);
}

void X11ClipboardLender::ownUserContentAgain() {
    // The other client owns the clipboard from a later time than ours: only the server's time
    // of this request comes after it.
    if (m_userContent.isEmpty() && !m_hadOwner) {
        XSetSelectionOwner(display(), m_clipboard, None, CurrentTime);
    } else {
        m_offered = m_userContent;
        XSetSelectionOwner(display(), m_clipboard, window(), CurrentTime);
        m_owner = XGetSelectionOwner(display(), m_clipboard) == window();
    }
    XFlush(display());
    qCInfo(lcEngine).noquote()
        << QStringLiteral("A clipboard manager kept the pasted text: the clipboard holds its "
                          "earlier content again");
}

std::optional<QString> X11ClipboardLender::offeredText() const {
    for (const unsigned long target : {m_utf8, m_textPlainUtf8}) {
        if (const Value* value = offered(target); value && !value->bytes.isEmpty())
            return QString::fromUtf8(value->bytes);
    }
    if (const Value* value = offered(XA_STRING); value && !value->bytes.isEmpty())
        return QString::fromLatin1(value->bytes);
    return std::nullopt;
}

const X11ClipboardLender::Value* X11ClipboardLender::offered(unsigned long target) const {
    for (const auto& [format, value] : m_offered)
        if (format == target)
            return &value;
    return nullptr;
}

void X11ClipboardLender::serve(const XEvent& event) {
    const XSelectionRequestEvent& request = event.xselectionrequest;
    XEvent reply{};
    reply.xselection.type = SelectionNotify;
    reply.xselection.display = display();
    reply.xselection.requestor = request.requestor;
    reply.xselection.selection = request.selection;
    reply.xselection.target = request.target;
    reply.xselection.time = request.time;
    reply.xselection.property = None;
    // Obsolete clients name no property: the target's name is used then.
    const Atom property = request.property != None ? request.property : request.target;
    bool tookText = false;
    const bool ours = m_owner && request.selection == m_clipboard && request.owner == window() &&
                      (request.time == CurrentTime || request.time >= m_time);
    if (ours && request.target == m_targets) {
        QList<long> atoms{long(m_targets), long(m_timestamp)};
        for (const auto& [format, value] : std::as_const(m_offered))
            atoms.append(long(format));
        XChangeProperty(display(), request.requestor, property, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(atoms.constData()),
                        int(atoms.size()));
        reply.xselection.property = property;
    } else if (ours && request.target == m_timestamp) {
        const long time = long(m_time);
        XChangeProperty(display(), request.requestor, property, XA_INTEGER, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&time), 1);
        reply.xselection.property = property;
    } else if (const Value* value = ours ? offered(request.target) : nullptr) {
        // Any client's request for the text means it may be pasted: after that it is never
        // typed as well. Only the focused application's ends the loan at once.
        const bool lentText = m_phase == Phase::Lent && request.target != m_passwordHint;
        const bool text = lentText && (m_focusClient == 0 ||
                                       (request.requestor & ~m_resourceMask) == m_focusClient);
        m_taken = m_taken || lentText;
        if (lentText && !m_askedForLentText.contains(request.requestor & ~m_resourceMask))
            m_askedForLentText.append(request.requestor & ~m_resourceMask);
        if (value->bytes.size() > m_maxPropertyBytes) {
            // Too large for one request: announce the size, then one piece per deletion of the
            // property by the requestor.
            for (qsizetype i = m_transfers.size() - 1; i >= 0; --i)
                if (m_transfers[i].lastStep.hasExpired(transferGiveUpMs))
                    m_transfers.removeAt(i);
            XSelectInput(display(), request.requestor, PropertyChangeMask);
            const long size = long(value->bytes.size());
            XChangeProperty(display(), request.requestor, property, m_incr, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(&size), 1);
            Transfer transfer{request.requestor, property, *value, 0, text, {}};
            transfer.lastStep.start();
            m_transfers.append(transfer);
            if (text)
                m_timer.start(takeTimeoutMs);
        } else {
            XChangeProperty(display(), request.requestor, property, value->type, value->format,
                            PropModeReplace,
                            reinterpret_cast<const unsigned char*>(value->bytes.constData()),
                            int(value->bytes.size() / itemSize(value->format)));
            tookText = text;
        }
        reply.xselection.property = property;
    }
    XSendEvent(display(), request.requestor, False, NoEventMask, &reply);
    XFlush(display());
    if (tookText)
        finishLoan();
}

void X11ClipboardLender::sendNextIncrement(Transfer& transfer) {
    const qsizetype remaining = transfer.value.bytes.size() - transfer.sent;
    const int size = itemSize(transfer.value.format);
    // Whole items only.
    const qsizetype piece = (std::min)(remaining, m_maxPropertyBytes / size * size);
    XChangeProperty(display(), transfer.window, transfer.property, transfer.value.type,
                    transfer.value.format, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(transfer.value.bytes.constData() +
                                                           transfer.sent),
                    int(piece / size));
    transfer.lastStep.start();
    if (piece > 0) {
        transfer.sent += piece;
        if (transfer.lentText)
            m_timer.start(takeTimeoutMs);
    } else {
        // The empty piece ends the transfer.
        transfer.sent = -1;
        bool windowStillUsed = false;
        for (const Transfer& other : std::as_const(m_transfers))
            windowStillUsed = windowStillUsed || (&other != &transfer && other.window == transfer.window);
        if (!windowStillUsed)
            XSelectInput(display(), transfer.window, NoEventMask);
        if (transfer.lentText && m_phase == Phase::Lent) {
            XFlush(display());
            finishLoan();
            return;
        }
    }
    XFlush(display());
}

bool X11ClipboardLender::readProperty(unsigned long property, Value& value) {
    Atom type = None;
    int format = 0;
    unsigned long items = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display(), window(), property, 0, LONG_MAX / 4, True, AnyPropertyType,
                           &type, &format, &items, &after, &data) != Success)
        return false;
    value.type = type;
    value.format = format == 0 ? 8 : format;
    value.bytes = QByteArray(reinterpret_cast<const char*>(data),
                             qsizetype(items) * itemSize(value.format));
    if (data)
        XFree(data);
    return true;
}

int X11ClipboardLender::itemSize(int format) {
    // Xlib hands format-32 items over as longs, and format-16 ones as shorts.
    return format == 32 ? int(sizeof(long)) : format == 16 ? int(sizeof(short)) : 1;
}
