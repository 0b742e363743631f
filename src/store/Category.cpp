#include "Category.h"

#include "Timestamp.h"

#include <QHash>

#include <algorithm>

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

namespace {
bool containsName(const QStringList& names, const QString& name) {
    return names.contains(name, Qt::CaseInsensitive);
}
} // namespace

bool Category::Limit::expandsIn(const QStringList& names) const {
    if (!limits())
        return true;
    if (names.isEmpty())
        return false;
    const bool listed = std::any_of(names.cbegin(), names.cend(), [&](const QString& name) {
        return !name.isEmpty() && containsName(applications, name);
    });
    return kind == Kind::onlyIn ? listed : !listed;
}

bool Category::Limit::overlaps(const Limit& other) const {
    if (!limits() || !other.limits())
        return true;
    if (kind == Kind::exceptIn && other.kind == Kind::exceptIn)
        return true; // only finitely many applications are left out of each
    if (kind == Kind::onlyIn && other.kind == Kind::onlyIn)
        return std::any_of(applications.cbegin(), applications.cend(),
                           [&](const QString& name) { return containsName(other.applications, name); });
    // One lists where it expands, the other where it does not: they overlap unless every
    // application of the first is left out by the second.
    const Limit& only = kind == Kind::onlyIn ? *this : other;
    const Limit& except = kind == Kind::onlyIn ? other : *this;
    return std::any_of(only.applications.cbegin(), only.applications.cend(),
                       [&](const QString& name) { return !containsName(except.applications, name); });
}
