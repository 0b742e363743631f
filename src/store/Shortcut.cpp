#include "Shortcut.h"

#include "Timestamp.h"

#include <QHash>

Shortcut::Shortcut(QUuid id, QString command, QString content, double createdAt, QUuid categoryId)
    : id(id), command(std::move(command)), content(std::move(content)), createdAt(createdAt),
      categoryId(categoryId) {}

Shortcut Shortcut::create(QString command, QString content, QUuid categoryId) {
    return Shortcut(QUuid::createUuid(), std::move(command), std::move(content), Timestamp::now(),
                    categoryId);
}

size_t qHash(const Shortcut& shortcut, size_t seed) noexcept { return qHash(shortcut.id, seed); }
