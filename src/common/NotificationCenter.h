#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <functional>

// In-process publish/subscribe by name. Delivery is synchronous: post() returns after every
// observer of that name has run. Callers that want "after the current action" post from
// MainQueue::async, as the store does.
class NotificationCenter : public QObject {
    Q_OBJECT
public:
    static NotificationCenter& defaultCenter();

    void post(const QString& name, const QVariantMap& userInfo = {});

    // Calls `handler` for every notification called `name` until `context` is destroyed or
    // the returned connection is disconnected.
    QMetaObject::Connection observe(const QString& name, QObject* context,
                                    std::function<void(const QVariantMap&)> handler);

signals:
    void posted(const QString& name, const QVariantMap& userInfo);
};
