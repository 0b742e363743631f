#include "StoreMessages.h"

QString StoreMessages::text(const DataError& error) {
    switch (error.kind()) {
    case DataError::Kind::duplicateCategoryName:
        return tr("A category with this name already exists");
    case DataError::Kind::duplicateCommand:
        return tr("This command already exists");
    case DataError::Kind::blankCommand:
        return tr("Enter a command: a blank one would expand on every key");
    case DataError::Kind::damagedRecordsUnkept:
        return tr("Not saved: records in %1 could not be read, and there is no room to keep a "
                  "copy of the file before it is written over. Free some space, or choose to "
                  "save anyway.")
            .arg(error.file());
    case DataError::Kind::unreadableFile:
        return tr("%1 cannot be read: %2").arg(error.file(), error.why());
    case DataError::Kind::notALibrary:
        return tr("%1 holds no library Typolet can read").arg(error.file());
    case DataError::Kind::commandDiffersInCase:
        return tr("\u201C%1\u201D differs from this command only in letter case, and one of the "
                  "two matches the command's case: both would expand for the same keys.")
            .arg(error.why());
    case DataError::Kind::sameCommandInOverlap:
        return tr("Two snippets with the command \u201C%1\u201D would both expand in the same "
                  "application. Keep their categories to applications that do not overlap, or "
                  "change one of the commands.")
            .arg(error.why());
    case DataError::Kind::notSaved:
    case DataError::Kind::unreadableImport:
        return error.why();
    }
    return {};
}

QString StoreMessages::text(const SnippetStore::CommandClash& clash) {
    using Kind = SnippetStore::CommandClash::Kind;
    switch (clash.kind) {
    case Kind::none:
        return {};
    case Kind::sameCommand:
        return tr("Another snippet has this command too (another computer added it): the one "
                  "changed last expands. Change one of the two commands.");
    case Kind::differsInCase:
        return tr("\u201C%1\u201D differs from this command only in letter case, and one of the "
                  "two matches the command's case: both would expand for the same keys.")
            .arg(clash.longerCommand);
    case Kind::shorterExpands:
        // The snippet being edited is the shorter one when the clash names no other id: then it
        // is the other snippet that can no longer be typed.
        return clash.shorterId.isNull()
                   ? tr("\u201C%1\u201D expands while \u201C%2\u201D is typed, so \u201C%2\u201D "
                        "cannot be typed any more.")
                         .arg(clash.shorterCommand, clash.longerCommand)
                   : tr("\u201C%1\u201D expands while \u201C%2\u201D is typed, so \u201C%2\u201D "
                        "cannot be typed.")
                         .arg(clash.shorterCommand, clash.longerCommand);
    }
    return {};
}
