#pragma once

#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QUuid>

// A named group of snippets. A value record like the snippet: a rename is a new value in the
// store's list, which the views hear of through the store's signal. Two categories are the
// same category exactly when their ids are equal, whatever their names.
struct Category {
    QUuid id;
    QString name;
    double createdAt = 0; // seconds since 2001-01-01 UTC (see Timestamp)

    // Where the category's snippets expand: everywhere, only in some applications, or
    // everywhere except in them. Applications are window classes (either part of X11's
    // WM_CLASS), letter case ignored. A limit with no application is no limit. Stored as
    // "onlyIn" or "exceptIn", a list of names, only when there is a limit.
    struct Limit {
        enum class Kind { everywhere, onlyIn, exceptIn };
        Kind kind = Kind::everywhere;
        QStringList applications;

        bool limits() const { return kind != Kind::everywhere && !applications.isEmpty(); }
        // Whether the snippets expand in the application known by these names. Where the
        // application cannot be told (no names), only those of a category without a limit do.
        bool expandsIn(const QStringList& names) const;
        // Whether some application would have the snippets of both.
        bool overlaps(const Limit& other) const;
        friend bool operator==(const Limit& a, const Limit& b) {
            return (!a.limits() && !b.limits()) ||
                   (a.kind == b.kind && a.applications == b.applications);
        }
    };
    Limit limit;

    Category() = default;
    Category(QUuid id, QString name, double createdAt);

    // A new category with a fresh random id, created now.
    static Category create(QString name);

    // The built-in category every snippet falls back to.
    static Category defaultCategory();
    static const QUuid defaultCategoryId;  // all zeros
    static const QUuid reservedCategoryId; // all ones; shown protected like the default

    // True for the two ids the views never offer to rename or delete.
    static bool isProtected(const QUuid& id);

    friend bool operator==(const Category& a, const Category& b) { return a.id == b.id; }
};

size_t qHash(const Category& category, size_t seed = 0) noexcept;

Q_DECLARE_METATYPE(Category)
