#pragma once

#include <QString>

// Why the store refused or could not keep a change.
class DataError {
public:
    enum class Kind {
        duplicateCategoryName,
        duplicateCommand,
        blankCommand,
        notSaved,
        unreadableImport,
        commandDiffersInCase,
        sameCommandInOverlap,
    };

    static DataError duplicateCategoryName() { return DataError(Kind::duplicateCategoryName); }
    static DataError duplicateCommand() { return DataError(Kind::duplicateCommand); }
    static DataError blankCommand() { return DataError(Kind::blankCommand); }
    // Another snippet's command differs only in letter case, and one of the two matches the
    // command's case: both would expand for the same keys. `otherCommand` is that command.
    static DataError commandDiffersInCase(QString otherCommand) {
        return DataError(Kind::commandDiffersInCase, std::move(otherCommand));
    }
    // A change of categories would leave two snippets with one command (or commands that differ
    // only in case) expanding in the same application. `command` is one of them.
    static DataError sameCommandInOverlap(QString command) {
        return DataError(Kind::sameCommandInOverlap, std::move(command));
    }
    // The change is in memory but not on disk; `why` names the file and the reason.
    static DataError notSaved(QString why) { return DataError(Kind::notSaved, std::move(why)); }
    // An import whose file could not be read; `why` names the file and what is wrong with it.
    static DataError unreadableImport(QString why) {
        return DataError(Kind::unreadableImport, std::move(why));
    }

    Kind kind() const { return m_kind; }
    // For notSaved and unreadableImport: the file and the reason, as the system gave them; for
    // the command clashes, the command.
    const QString& why() const { return m_why; }

    friend bool operator==(const DataError& a, const DataError& b) {
        return a.m_kind == b.m_kind && a.m_why == b.m_why;
    }

private:
    explicit DataError(Kind kind, QString why = {}) : m_kind(kind), m_why(std::move(why)) {}
    Kind m_kind;
    QString m_why;
};
