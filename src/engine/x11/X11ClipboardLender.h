#pragma once

#include "X11SelectionWindow.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

typedef struct _XDisplay Display;
union _XEvent;
typedef union _XEvent XEvent;

// Lends the CLIPBOARD selection to a text for one paste, and gives the user's clipboard back
// afterwards as it was.
//
// Before taking the clipboard it asks the owner for every format it offers (TARGETS) and reads
// each one, large ones in increments (INCR), so that it can offer exactly the same afterwards.
// Then it owns the clipboard with the text (UTF8_STRING, text/plain;charset=utf-8, TEXT and
// STRING) and a "secret" x-kde-passwordManagerHint, which clipboard managers honour by keeping
// the text out of their history. Once an application has taken the text, or nobody asked for
// it in time, it owns the clipboard again with the saved formats, or gives it up to nobody when
// nobody owned it before; from then on it answers for them until another program takes the
// clipboard.
//
// The loan ends when the client that has the keyboard focus has asked for the text; other
// clients (clipboard managers) are answered too, but the loan goes on for them. A clipboard
// manager that copies every new content and then owns the clipboard itself would keep the
// lent text there: when a client that asked for the lent text takes the clipboard, during the
// loan or after it, the user's content is owned again (once per client and loan), so that the
// manager copies that instead.
//
// Everything runs from the main event loop: its own Xlib connection, read when the socket has
// data, and timers for the owners and requestors that never answer. Nothing waits.
class X11ClipboardLender : public QObject {
    Q_OBJECT
public:
    explicit X11ClipboardLender(QObject* parent = nullptr);
    ~X11ClipboardLender() override;

    // Opens the connection and the window that owns the selection. False without a display.
    bool open();

    // Saves what the clipboard holds, then puts `text` on it. `ready(true)` once Typolet owns
    // it: the application may be told to paste now. `ready(false)` when the clipboard could not
    // be saved whole or owned; it is unchanged then. After `ready(true)`, `returned(taken)` comes
    // once the focused application has taken the text, or after `takeTimeoutMs` or giveBack();
    // `taken` is false when no client at all asked for the text. The clipboard then holds what it
    // held before. Both are called from the event loop, never from within lend().
    void lend(const QString& text, std::function<void(bool)> ready,
              std::function<void(bool)> returned);
    // While the text is lent: gives the clipboard back now (the paste did not happen).
    void giveBack();
    bool isBusy() const { return m_phase != Phase::Idle; }

    // While Typolet holds the user's clipboard (after a paste), the text it offers there: asking
    // for it through another connection of this process would wait on ourselves.
    bool ownsClipboard() const { return m_owner; }
    std::optional<QString> offeredText() const;

    // How long the current owner may take to hand over all of its formats.
    static constexpr int saveTimeoutMs = 1500;
    // How long an application has, after the paste keys, to ask for the text; also the longest
    // pause within an incremental transfer.
    static constexpr int takeTimeoutMs = 2000;
    // Beyond this the clipboard is not saved (and the text is typed instead).
    static constexpr qsizetype maxSavedBytes = qsizetype(256) * 1024 * 1024;

private:
    enum class Phase { Idle, Stamping, Saving, Lent };
    // A property's value as Xlib holds it in memory (items of format 32 are longs).
    struct Value {
        unsigned long type = 0;
        int format = 8;
        QByteArray bytes;
    };
    // A value sent in increments to one requestor.
    struct Transfer {
        unsigned long window = 0;
        unsigned long property = 0;
        Value value;
        qsizetype sent = 0;
        bool lentText = false;
        QElapsedTimer lastStep;
    };
    using Formats = QList<std::pair<unsigned long, Value>>;

    void readEvents();
    void process(XEvent& event);
    void startSaving(unsigned long time);
    void fetchNext();
    void fetched(const Value& value);
    void saveFailed(const QString& reason);
    void own();
    void finishLoan();
    // Owns the clipboard with the user's content again (or leaves it to nobody when it was
    // empty), with a fresh time, after another client took it.
    void ownUserContentAgain();
    void serve(const XEvent& event);
    void sendNextIncrement(Transfer& transfer);
    bool readProperty(unsigned long property, Value& value);
    static int itemSize(int format);
    const Value* offered(unsigned long target) const;

    X11SelectionWindow m_connection;
    Display* display() const { return m_connection.display(); } // null until open
    unsigned long window() const { return m_connection.window(); }
    qsizetype m_maxPropertyBytes = 0;
    unsigned long m_resourceMask = 0; // the part of a window's id that its client chose

    unsigned long m_clipboard = 0, m_targets = 0, m_timestamp = 0, m_multiple = 0, m_incr = 0,
                  m_utf8 = 0, m_text = 0, m_textPlainUtf8 = 0, m_passwordHint = 0,
                  m_transferProperty = 0, m_stampProperty = 0;
    QList<unsigned long> m_notSaved; // targets that are requests to the owner, not formats

    Phase m_phase = Phase::Idle;
    QTimer m_timer;
    std::function<void(bool)> m_ready;
    std::function<void(bool)> m_returned;
    bool m_taken = false; // some client asked for the text
    QString m_lentText;
    unsigned long m_time = 0; // of our current ownership
    // The client that had the focus when the text was lent; 0 for any. A clipboard manager
    // that copies every new content does not take the text for the application.
    unsigned long m_focusClient = 0;

    bool m_owner = false;
    Formats m_offered; // what we answer for while we own the clipboard

    bool m_hadOwner = false;
    Formats m_saved;
    qsizetype m_savedBytes = 0;
    QList<unsigned long> m_toFetch;
    unsigned long m_fetching = 0;
    bool m_incoming = false;
    Value m_incomingValue;
    bool m_lostWhileLent = false;
    // Clients (by their windows' common id bits) that asked for the lent text in this loan.
    QList<unsigned long> m_askedForLentText;
    bool m_managerTook = false; // one of them took the clipboard during the loan
    Formats m_userContent;      // what the user's clipboard held before the loan

    QList<Transfer> m_transfers;
};
