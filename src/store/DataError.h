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
        damagedRecordsUnkept,
        unreadableFile,
        notALibrary,
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
    // Not saved either: `file` holds records that could not be read, and there is no room to
    // keep a copy of it before writing over them.
    static DataError damagedRecordsUnkept(QString file) {
        return DataError(Kind::damagedRecordsUnkept, {}, std::move(file));
    }
    // A version of the library that could not be opened; `why` is the system's reason.
    static DataError unreadableFile(QString file, QString why) {
        return DataError(Kind::unreadableFile, std::move(why), std::move(file));
    }
    // A file that opened but holds no snippet or category list that reads.
    static DataError notALibrary(QString file) {
        return DataError(Kind::notALibrary, {}, std::move(file));
    }
    // An import whose file could not be read; `why` names the file and what is wrong with it.
    static DataError unreadableImport(QString why) {
        return DataError(Kind::unreadableImport, std::move(why));
    }

    Kind kind() const { return m_kind; }
    // The change was made in memory but is not on disk.
    bool isUnsaved() const {
        return m_kind == Kind::notSaved || m_kind == Kind::damagedRecordsUnkept;
    }
    // For notSaved and unreadableImport: the file and the reason, as the system gave them; for
    // unreadableFile the reason alone; for the command clashes, the command.
    const QString& why() const { return m_why; }
    // The file concerned, where `why` does not name it.
    const QString& file() const { return m_file; }

    friend bool operator==(const DataError& a, const DataError& b) {
        return a.m_kind == b.m_kind && a.m_why == b.m_why && a.m_file == b.m_file;
    }

private:
    explicit DataError(Kind kind, QString why = {}, QString file = {})
        : m_kind(kind), m_why(std::move(why)), m_file(std::move(file)) {}
    Kind m_kind;
    QString m_why;
    QString m_file;
};
