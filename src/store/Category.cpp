#include "Category.h"

#include "Timestamp.h"

#include <QHash>

const QUuid Category::defaultCategoryId{};
const QUuid Category::reservedCategoryId{QStringLiteral("11111111-1111-1111-1111-111111111111")};

Category::Category(QUuid id, QString name, double createdAt)
    : id(id), name(std::move(name)), createdAt(createdAt) {}

Category Category::create(QString name) {
    return Category(QUuid::createUuid(), std::move(name), Timestamp::now());
}

Category Category::defaultCategory() {
    return Category(defaultCategoryId, QStringLiteral("Uncategory"), Timestamp::fromUnix(0));
}

bool Category::isProtected(const QUuid& id) {
    return id == defaultCategoryId || id == reservedCategoryId;
}

size_t qHash(const Category& category, size_t seed) noexcept { return qHash(category.id, seed); }
