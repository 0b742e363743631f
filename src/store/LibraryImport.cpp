#include "LibraryImport.h"

#include "AutoKeyPhraseFolder.h"
#include "EspansoMatchFile.h"
#include "TypoletLibraryFile.h"

#include <QFile>
#include <QFileInfo>

ImportPlan LibraryImport::read(const QString& path) {
    const QFileInfo info(path);
    if (info.isDir())
        return AutoKeyPhraseFolder::read(path);
    const QString suffix = info.suffix().toLower();
    if (suffix == QLatin1String("yml") || suffix == QLatin1String("yaml"))
        return EspansoMatchFile::read(path);
    return TypoletLibraryFile::read(path);
}

std::optional<QString> LibraryImport::readFile(const QString& path, QByteArray& data) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return tr("%1 could not be read: %2").arg(path, file.errorString());
    if (file.size() > maxFileSize)
        return tr("%1 is too large to import (%2 MB; at most %3 MB).")
            .arg(path)
            .arg(file.size() >> 20)
            .arg(maxFileSize >> 20);
    data = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return tr("%1 could not be read: %2").arg(path, file.errorString());
    return std::nullopt;
}
