#include "XdgAutostartBackend.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace {
QString defaultAutostartFolder() {
    // GenericConfigLocation honours XDG_CONFIG_HOME and falls back to ~/.config.
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
        .filePath(QStringLiteral("autostart"));
}
} // namespace

XdgAutostartBackend::XdgAutostartBackend(QString autostartFolder, QString executable)
    : m_folder(autostartFolder.isEmpty() ? defaultAutostartFolder() : std::move(autostartFolder)),
      m_executable(executable.isEmpty() ? QCoreApplication::applicationFilePath()
                                        : std::move(executable)) {}

QString XdgAutostartBackend::entryPath() const {
    return QDir(m_folder).filePath(QLatin1String(entryFileName));
}

QString XdgAutostartBackend::execArgument(const QString& path) {
    // Quoting rules of the Exec key: inside double quotes, `"`, backquote, `$` and `\` are
    // escaped with a backslash; a literal percent sign is written twice.
    QString quoted;
    quoted.reserve(path.size() + 8);
    for (const QChar c : path) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += u'\\';
        if (c == u'%')
            quoted += u'%';
        quoted += c;
    }
    quoted = u'"' + quoted + u'"';

    // Then the general string escaping of desktop entry values.
    QString value;
    value.reserve(quoted.size() + 8);
    for (const QChar c : std::as_const(quoted)) {
        switch (c.unicode()) {
        case '\\':
            value += QLatin1String("\\\\");
            break;
        case '\n':
            value += QLatin1String("\\n");
            break;
        case '\t':
            value += QLatin1String("\\t");
            break;
        case '\r':
            value += QLatin1String("\\r");
            break;
        default:
            value += c;
        }
    }
    return value;
}

QByteArray XdgAutostartBackend::entryContent(const QString& executable) {
    QString text;
    text += QLatin1String("[Desktop Entry]\n");
    text += QLatin1String("Type=Application\n");
    text += QLatin1String("Name=Typolet\n");
    text += QLatin1String("Comment=Expands your snippets as you type\n");
    text += QLatin1String("Exec=") + execArgument(executable) + u'\n';
    text += QLatin1String("Icon=typolet\n");
    text += QLatin1String("Terminal=false\n");
    text += QLatin1String("X-GNOME-Autostart-enabled=true\n");
    return text.toUtf8();
}

std::optional<QString> XdgAutostartBackend::registerItem() {
    if (!QDir().mkpath(m_folder))
        return QStringLiteral("Cannot create the folder %1").arg(m_folder);

    QSaveFile file(entryPath());
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    const QByteArray content = entryContent(m_executable);
    if (file.write(content) != content.size()) {
        const QString error = file.errorString();
        file.cancelWriting();
        return error;
    }
    if (!file.commit())
        return file.errorString();
    return std::nullopt;
}

bool XdgAutostartBackend::isRegistered() const {
    return QFileInfo::exists(entryPath());
}

std::optional<QString> XdgAutostartBackend::unregisterItem() {
    QFile file(entryPath());
    const QFileInfo info(file.fileName());
    if (!info.exists() && !info.isSymLink())
        return std::nullopt;
    if (!file.remove())
        return file.errorString();
    return std::nullopt;
}
