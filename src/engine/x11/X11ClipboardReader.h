#pragma once

#include "ClipboardSource.h"
#include "X11SelectionWindow.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QTimer>
#include <memory>

class X11ClipboardLender;
typedef struct _XDisplay Display;

// Reads the CLIPBOARD selection's text for a {{clipboard}} placeholder without waiting on the
// main thread: asks the owner for its formats and then for its text (UTF-8 where offered) on a
// connection of its own, and answers when the text has come (in increments too), or with
// nothing when the owner does not answer within answerTimeoutMs. An owner that never answers
// costs that long, and one line says so.
//
// After a paste Typolet itself holds the user's clipboard (see X11ClipboardLender); asking that
// owner through the X server would wait for an answer that only this thread can give, so the
// lender's copy is read instead.
class X11ClipboardReader : public QObject, public ClipboardSource {
    Q_OBJECT
public:
    explicit X11ClipboardReader(const X11ClipboardLender* lender = nullptr,
                                QObject* parent = nullptr);
    ~X11ClipboardReader() override;

    // Questions asked while one is under way get the same answer.
    void readText(TextHandler done) override;

    static constexpr int answerTimeoutMs = 1500;

private:
    bool open();
    void readEvents();
    // Asks for the best text format among the owner's; finishes with none without one.
    void askForText(const QByteArray& targets);
    std::optional<QString> decoded(const QByteArray& bytes) const;
    void finish(std::optional<QString> text);
    // Takes the property's value off the window; false when it is not there.
    bool takeProperty(QByteArray& bytes, unsigned long& type);

    const X11ClipboardLender* m_lender;
    X11SelectionWindow m_connection;
    Display* display() const { return m_connection.display(); } // null until open
    unsigned long window() const { return m_connection.window(); }
    unsigned long m_clipboard = 0, m_utf8 = 0, m_incr = 0, m_property = 0, m_targets = 0,
                  m_textPlainUtf8 = 0;
    unsigned long m_asking = 0; // the format asked for now: TARGETS, then a text format
    QTimer m_timeout;
    QList<TextHandler> m_waiting;
    bool m_incoming = false; // an incremental transfer is under way
    QByteArray m_received;
};
