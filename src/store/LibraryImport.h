#pragma once

#include "ImportPlan.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <optional>

// Reads whatever the user picked to import: a folder is a phrase folder (AutoKeyPhraseFolder),
// a .yml or .yaml file a match file (EspansoMatchFile), anything else Typolet's own library
// file (TypoletLibraryFile).
class LibraryImport {
    Q_DECLARE_TR_FUNCTIONS(LibraryImport)
public:
    static ImportPlan read(const QString& path);

    // Larger files are refused rather than read into memory whole.
    static constexpr qint64 maxFileSize = qint64(256) << 20;

    // The whole file into `data`; on failure why, naming the file.
    static std::optional<QString> readFile(const QString& path, QByteArray& data);
};
