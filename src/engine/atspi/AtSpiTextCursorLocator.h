#pragma once

#include "TextCursorLocator.h"

#include <QObject>
#include <QString>
#include <memory>

class QDBusConnection;
class QDBusMessage;

// Finds the text cursor through AT-SPI, the accessibility interface that GTK, Qt and the
// browsers speak over D-Bus. Focus events, followed while Typolet runs, say which object has
// the focus; when asked, that object is asked for its caret offset and then for the rectangle
// of the character there, in screen coordinates: two short asynchronous calls, cut off at the
// answer deadline. Its text is never asked for.
//
// Without a D-Bus session or an accessibility bus, or before any focus event, every answer is
// "unknown", given at once.
class AtSpiTextCursorLocator : public QObject, public TextCursorLocator {
    Q_OBJECT
public:
    explicit AtSpiTextCursorLocator(QObject* parent = nullptr);
    ~AtSpiTextCursorLocator() override;

    // Looks for the accessibility bus and starts following the focus there.
    void start();

    void locate(QObject* context, Answer answered) override;

private slots:
    void stateChanged(const QDBusMessage& event);
    void nameOwnerChanged(const QString& name, const QString& oldOwner, const QString& newOwner);

private:
    void listenOn(const QString& address);
    void unavailable(const QString& why);

    std::unique_ptr<QDBusConnection> m_bus;
    // The focused accessible object, known by its application's bus name and its path.
    QString m_service;
    QString m_path;
};
