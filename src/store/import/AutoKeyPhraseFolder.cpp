#include "AutoKeyPhraseFolder.h"

#include "ImportReader.h"

#include <QDir>
#include <QHash>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

ImportPlan AutoKeyPhraseFolder::read(const QString& folder, ImportReader& reader) {
    const QFileInfo folderInfo(folder);
    if (!folderInfo.isDir() || !folderInfo.isReadable())
        return ImportPlan::failure(folder, tr("%1 is not a folder that can be read.").arg(folder));

    // In a fixed order, whatever order the file system lists them in. System entries (pipes,
    // devices, sockets) are listed too, to be refused by name when they are read.
    QStringList phrases;
    QDirIterator found(folder, {QStringLiteral("*.txt")}, QDir::Files | QDir::System,
                       QDirIterator::Subdirectories);
    while (found.hasNext()) {
        if (reader.cancelled())
            return ImportPlan::failure(folder, ImportReader::cancelledMessage());
        found.next();
        // A link that leads nowhere is left out, as it always was; System lists those too.
        if (found.fileInfo().exists())
            phrases.append(found.filePath());
    }
    phrases.sort();
    if (phrases.isEmpty())
        return ImportPlan::failure(
            folder, tr("%1 holds no phrases: none of its files is a NAME.txt with a .NAME.json "
                       "beside it.")
                        .arg(folder));

    // The folder is a category, and so is each folder under it, named by its path.
    const QDir root(folder);
    QHash<QString, QUuid> categoryOf; // by folder path relative to the one picked
    ImportPlan plan;
    plan.source = folder;
    const auto categoryFor = [&](const QFileInfo& phrase) {
        const QString relative = root.relativeFilePath(phrase.path());
        if (const auto found = categoryOf.constFind(relative); found != categoryOf.cend())
            return *found;
        const QString name = relative == QLatin1String(".")
                                 ? folderInfo.fileName()
                                 : folderInfo.fileName() + QLatin1Char('/') + relative;
        const Category category = Category::create(name);
        plan.categories.append(category);
        categoryOf.insert(relative, category.id);
        return category.id;
    };
    for (qsizetype i = 0; i < phrases.size(); ++i) {
        reader.report(i, phrases.size());
        const QString& phrase = phrases[i];
        const QFileInfo txt(phrase);
        const QString settingsPath =
            txt.dir().filePath(QLatin1Char('.') + txt.completeBaseName() + QStringLiteral(".json"));
        // Looked up without opening it: it may be a pipe.
        if (!QFileInfo::exists(settingsPath))
            return ImportPlan::failure(
                folder, tr("%1 has no settings file %2 beside it, so its abbreviations are "
                           "unknown.")
                            .arg(phrase, settingsPath));
        QByteArray content, settings;
        if (const auto error = reader.readFile(phrase, content))
            return ImportPlan::failure(folder, *error);
        if (const auto error = reader.readFile(settingsPath, settings))
            return ImportPlan::failure(folder, *error);

        QJsonParseError parseError{};
        const QJsonDocument document = QJsonDocument::fromJson(settings, &parseError);
        if (parseError.error != QJsonParseError::NoError || !document.isObject())
            return ImportPlan::failure(
                folder, tr("%1 is not a JSON object: %2 (at character %3).")
                            .arg(settingsPath, parseError.error != QJsonParseError::NoError
                                                   ? parseError.errorString()
                                                   : tr("it holds another JSON value"))
                            .arg(parseError.offset));
        const QJsonObject settingsOfAbbreviation =
            document.object().value(QLatin1String("abbreviation")).toObject();
        const QJsonArray abbreviations =
            settingsOfAbbreviation.value(QLatin1String("abbreviations")).toArray();
        // Unless "immediate", a phrase waits for a trigger key after its abbreviation (a space,
        // Tab, Return or punctuation): our "Expand only after a word ends".
        const Snippet::Trigger trigger =
            settingsOfAbbreviation.value(QLatin1String("immediate")).toBool(false)
                ? Snippet::Trigger::Immediately
                : Snippet::Trigger::AfterWordEnd;
        int taken = 0;
        for (const QJsonValue& abbreviation : abbreviations) {
            if (!abbreviation.isString())
                continue;
            plan.addSnippet(Snippet::create(abbreviation.toString(), QString::fromUtf8(content),
                                            categoryFor(txt), trigger));
            ++taken;
        }
        if (taken == 0)
            ++plan.skipped;
    }
    // A folder with nothing usable brings no empty category either.
    if (plan.snippets.isEmpty())
        plan.categories.clear();
    return plan;
}
