#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>
#include <optional>

// Replaces a file with new bytes all at once, or not at all: written beside the old file,
// synced, read back and compared, and only then renamed over it. QSaveFile does the renaming;
// this checks what QSaveFile does not report (a write that fails only when its buffer is
// flushed at commit, a failed sync).
class AtomicFile {
public:
    static constexpr QFileDevice::Permissions ownerOnly =
        QFileDevice::ReadOwner | QFileDevice::WriteOwner;

    // Returns why the file could not be replaced; the old file is then as it was.
    static std::optional<QString> write(const QString& path, const QByteArray& bytes,
                                        QFileDevice::Permissions permissions = ownerOnly);
};
