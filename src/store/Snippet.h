#pragma once

#include <QList>
#include <QMetaType>
#include <QString>
#include <QUuid>

// One snippet: typing `command` replaces it with `content`. A value record; two snippets are
// the same snippet exactly when their ids are equal, whatever else differs.
struct Snippet {
    // When the command fires: as soon as its last character is typed, or only once a word
    // ends after it (space, Tab, Return or punctuation), so that ";sig" can live beside
    // ";signature". Kept beside the snippet list, not in its JSON.
    enum class Trigger { Immediately, AfterWordEnd };

    QUuid id;
    QString command;
    QString content;
    double createdAt = 0; // seconds since 2001-01-01 UTC (see Timestamp)
    QUuid categoryId;
    Trigger trigger = Trigger::Immediately;
    // The command is found whatever the letter case it is typed in, and the content follows
    // that case (see CommandCase). Stored as "matchCase" in the record, only when on.
    bool matchCase = false;

    Snippet() = default;
    Snippet(QUuid id, QString command, QString content, double createdAt, QUuid categoryId);

    // A new snippet with a fresh random id, created now.
    static Snippet create(QString command, QString content, QUuid categoryId,
                          Trigger trigger = Trigger::Immediately);

    bool expandsAfterWordEnd() const { return trigger == Trigger::AfterWordEnd; }

    // A character that ends a word after a command: white space (Tab and Return included) or
    // punctuation.
    static bool endsWord(QStringView character);

    friend bool operator==(const Snippet& a, const Snippet& b) { return a.id == b.id; }
};

size_t qHash(const Snippet& snippet, size_t seed = 0) noexcept;

Q_DECLARE_METATYPE(Snippet)
