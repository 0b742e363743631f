#include "EspansoMatchFile.h"

#include "LibraryImport.h"

#include <QFileInfo>
#include <yaml-cpp/yaml.h>

namespace {
QString text(const YAML::Node& scalar) {
    return QString::fromStdString(scalar.Scalar());
}

// A missing key gives a node that throws when asked its type; it is neither kind here.
bool isScalar(const YAML::Node& node) {
    return node.IsDefined() && node.IsScalar();
}
bool isSequence(const YAML::Node& node) {
    return node.IsDefined() && node.IsSequence();
}

// The triggers of one match, or none when it has no usable trigger.
QStringList triggersOf(const YAML::Node& match) {
    const YAML::Node trigger = match["trigger"];
    if (isScalar(trigger))
        return {text(trigger)};
    QStringList triggers;
    const YAML::Node list = match["triggers"];
    if (!isSequence(list))
        return {};
    for (const YAML::Node& item : list) {
        if (!isScalar(item))
            return {};
        triggers.append(text(item));
    }
    return triggers;
}
} // namespace

ImportPlan EspansoMatchFile::read(const QString& path) {
    QByteArray data;
    if (const auto error = LibraryImport::readFile(path, data))
        return ImportPlan::failure(path, *error);
    return decode(path, data);
}

ImportPlan EspansoMatchFile::decode(const QString& path, const QByteArray& yaml) {
    const Category category = Category::create(QFileInfo(path).completeBaseName());
    ImportPlan plan;
    plan.source = path;
    plan.categories.append(category);
    try {
        const YAML::Node root = YAML::Load(yaml.toStdString());
        const YAML::Node matches = root.IsMap() ? root["matches"] : YAML::Node();
        if (!isSequence(matches))
            return ImportPlan::failure(
                path, tr("%1 has no \u201Cmatches\u201D list, so it holds no snippets to import.")
                          .arg(path));
        for (const YAML::Node& match : matches) {
            const YAML::Node replace = match.IsMap() ? match["replace"] : YAML::Node();
            const QStringList triggers = isScalar(replace) ? triggersOf(match) : QStringList();
            if (triggers.isEmpty()) {
                ++plan.skipped;
                continue;
            }
            // `word: true` waits for the word around the trigger to end, as our option does.
            const YAML::Node word = match["word"];
            const bool wholeWord = isScalar(word) && word.as<std::string>() == "true";
            for (const QString& trigger : triggers)
                plan.addSnippet(Snippet::create(trigger, text(replace), category.id,
                                                wholeWord ? Snippet::Trigger::AfterWordEnd
                                                          : Snippet::Trigger::Immediately));
        }
        // A file with nothing usable brings no empty category either.
        if (plan.snippets.isEmpty())
            plan.categories.clear();
    } catch (const YAML::Exception& error) {
        const QString what = QString::fromStdString(error.msg);
        if (error.mark.is_null())
            return ImportPlan::failure(path, tr("%1 is not valid YAML: %2.").arg(path, what));
        // Lines and columns counted from 1, as editors show them.
        return ImportPlan::failure(path, tr("%1 is not valid YAML: %2 (line %3, column %4).")
                                             .arg(path, what)
                                             .arg(error.mark.line + 1)
                                             .arg(error.mark.column + 1));
    }
    return plan;
}
