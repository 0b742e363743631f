#include "LibraryImport.h"

#include "AutoKeyPhraseFolder.h"
#include "EspansoMatchFile.h"
#include "ImportReader.h"
#include "TypoletLibraryFile.h"

#include <QFileInfo>

ImportPlan LibraryImport::read(const QString& path, ImportReader& reader) {
    const QFileInfo info(path);
    if (info.isDir())
        return AutoKeyPhraseFolder::read(path, reader);
    const QString suffix = info.suffix().toLower();
    if (suffix == QLatin1String("yml") || suffix == QLatin1String("yaml"))
        return EspansoMatchFile::read(path, reader);
    return TypoletLibraryFile::read(path, reader);
}

ImportPlan LibraryImport::read(const QString& path) {
    ImportReader reader;
    return read(path, reader);
}
