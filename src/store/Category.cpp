#include "Category.h"

#include "Timestamp.h"

#include <QHash>

const QUuid Category::defaultCategoryId{};
const QUuid Category::reservedCategoryId{QStringLiteral("11111111-1111-1111-1111-111111111111")};

Category::Category(QUuid id, QString name, double createdAt)
    : m_id(id), m_name(std::move(name)), m_createdAt(createdAt) {}

CategoryRef Category::create(QString name) {
    return CategoryRef::create(QUuid::createUuid(), std::move(name), Timestamp::now());
}

CategoryRef Category::defaultCategory() {
    return CategoryRef::create(defaultCategoryId, QStringLiteral("Uncategory"),
                               Timestamp::fromUnix(0));
}

bool Category::isProtected(const QUuid& id) {
    return id == defaultCategoryId || id == reservedCategoryId;
}

void Category::setName(const QString& name) {
    if (name == m_name)
        return;
    m_name = name;
    emit nameChanged(m_name);
}

size_t qHash(const Category& category, size_t seed) noexcept { return qHash(category.id(), seed); }
