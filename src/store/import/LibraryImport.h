#pragma once

#include "ImportPlan.h"

#include <QString>

class ImportReader;

// Reads whatever the user picked to import: a folder is a phrase folder (AutoKeyPhraseFolder),
// a .yml or .yaml file a match file (EspansoMatchFile), anything else Typolet's own library
// file (TypoletLibraryFile). Files are read through `reader`, within its limits; a cancelled
// read fails with ImportReader::cancelledMessage().
class LibraryImport {
public:
    static ImportPlan read(const QString& path, ImportReader& reader);
    // With a reader of its own: nothing can cancel it.
    static ImportPlan read(const QString& path);
};
