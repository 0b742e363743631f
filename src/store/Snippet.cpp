#include "Snippet.h"

#include "Timestamp.h"

#include <QHash>

Snippet::Snippet(QUuid id, QString command, QString content, double createdAt, QUuid categoryId)
    : id(id), command(std::move(command)), content(std::move(content)), createdAt(createdAt),
      categoryId(categoryId) {}

Snippet Snippet::create(QString command, QString content, QUuid categoryId) {
    return Snippet(QUuid::createUuid(), std::move(command), std::move(content), Timestamp::now(),
                    categoryId);
}

size_t qHash(const Snippet& snippet, size_t seed) noexcept { return qHash(snippet.id, seed); }
