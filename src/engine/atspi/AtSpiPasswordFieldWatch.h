#pragma once

#include "PasswordFieldWatch.h"

#include <QObject>
#include <QString>
#include <memory>

class QDBusConnection;
class QDBusMessage;

// Follows the keyboard focus through AT-SPI, the accessibility interface that GTK, Qt and the
// browsers speak over D-Bus, and knows whether the focused object is a password field.
//
// Everything is asynchronous: the accessibility bus is asked for once at start, focus events
// arrive as D-Bus signals on QtDBus's own thread and reach this object through the event loop,
// and a focused object's role comes from a call whose answer comes later. The
// answer to passwordFieldFocused() is therefore always at hand and costs nothing per key.
//
// Without a D-Bus session or an accessibility bus, it says once that password fields cannot be
// recognised and answers false from then on.
class AtSpiPasswordFieldWatch : public QObject, public PasswordFieldWatch {
    Q_OBJECT
public:
    explicit AtSpiPasswordFieldWatch(QObject* parent = nullptr);
    ~AtSpiPasswordFieldWatch() override;

    // Looks for the accessibility bus and starts listening for focus changes there.
    void start();

    bool passwordFieldFocused() const override;

private slots:
    void stateChanged(const QDBusMessage& event);
    void nameOwnerChanged(const QString& name, const QString& oldOwner, const QString& newOwner);

private:
    void listenOn(const QString& address);
    void unavailable(const QString& why);
    void focusGained(const QString& service, const QString& path);
    void forgetFocus();

    std::unique_ptr<QDBusConnection> m_bus;
    // The focused accessible object, known by its application's bus name and its path.
    QString m_service;
    QString m_path;
    enum class Field { None, Plain, Password, Asking };
    Field m_field = Field::None;
    bool m_saidUnavailable = false;
};
