#include "NotificationCenter.h"

NotificationCenter& NotificationCenter::defaultCenter() {
    static NotificationCenter center;
    return center;
}

void NotificationCenter::post(const QString& name, const QVariantMap& userInfo) {
    emit posted(name, userInfo);
}

QMetaObject::Connection NotificationCenter::observe(const QString& name, QObject* context,
                                                    std::function<void(const QVariantMap&)> handler) {
    return connect(this, &NotificationCenter::posted, context,
                   [name, handler = std::move(handler)](const QString& posted,
                                                        const QVariantMap& userInfo) {
                       if (posted == name)
                           handler(userInfo);
                   },
                   Qt::DirectConnection);
}
