#pragma once

#include "Category.h"
#include "Snippet.h"

#include <QFile>
#include <QSaveFile>
#include <QStringList>
#include <algorithm>

// Files and records as the tests read and write them.

// The whole file, or nothing when it cannot be read.
inline QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Replaces the file at once, as sync services and editors do; false when that failed.
inline bool replaceFile(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

inline QStringList commandsOf(const QList<Snippet>& snippets) {
    QStringList commands;
    for (const Snippet& snippet : snippets)
        commands << snippet.command;
    return commands;
}

// "command=content" of each snippet, sorted: a library as a whole, whatever its order.
inline QStringList contentsOf(const QList<Snippet>& snippets) {
    QStringList shown;
    for (const Snippet& snippet : snippets)
        shown << snippet.command + u'=' + snippet.content;
    std::sort(shown.begin(), shown.end());
    return shown;
}

inline QStringList namesOf(const QList<Category>& categories) {
    QStringList names;
    for (const Category& category : categories)
        names << category.name;
    return names;
}
