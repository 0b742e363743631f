#pragma once

#include "ImportPlan.h"

#include <QCoreApplication>
#include <QString>

class ImportReader;

// A phrase folder of the AutoKey text expander: per phrase a NAME.txt with the content as it
// is typed and beside it a hidden .NAME.json whose "abbreviation" object lists the
// abbreviations. Each abbreviation becomes a snippet with the .txt content; a phrase without
// abbreviations (one typed by a hotkey only) is skipped and counted. Subfolders are read too,
// and every snippet goes into one category named after the folder chosen. Files that are not
// regular files (pipes, devices, links to them) are refused, not skipped, so the user learns
// why a phrase is missing.
class AutoKeyPhraseFolder {
    Q_DECLARE_TR_FUNCTIONS(AutoKeyPhraseFolder)
public:
    static ImportPlan read(const QString& folder, ImportReader& reader);
};
