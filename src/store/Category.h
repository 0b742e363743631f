#pragma once

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QUuid>

class Category;
using CategoryRef = QSharedPointer<Category>;

// A named group of snippets. Shared between the store and the views that show it; observers
// hear about a change of name through nameChanged(). Identity is the id alone, so the object
// that replaces a renamed category compares equal to the one it replaced.
class Category : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
public:
    Category(QUuid id, QString name, double createdAt);

    // A new category with a fresh random id, created now.
    static CategoryRef create(QString name);

    // A new object for the built-in category every snippet falls back to.
    static CategoryRef defaultCategory();
    static const QUuid defaultCategoryId;  // all zeros
    static const QUuid reservedCategoryId; // all ones; shown protected like the default

    // True for the two ids the views never offer to rename or delete.
    static bool isProtected(const QUuid& id);

    QUuid id() const { return m_id; }
    QString name() const { return m_name; }
    void setName(const QString& name);
    double createdAt() const { return m_createdAt; }

    friend bool operator==(const Category& a, const Category& b) { return a.m_id == b.m_id; }

signals:
    void nameChanged(const QString& name);

private:
    const QUuid m_id;
    QString m_name;
    const double m_createdAt;
};

size_t qHash(const Category& category, size_t seed = 0) noexcept;
