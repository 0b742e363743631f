#include "EspansoMatchFile.h"

#include "ImportReader.h"
#include "YamlInputBuffer.h"

#include <QFileInfo>
#include <QLocale>
#include <istream>
#include <optional>
#include <yaml-cpp/yaml.h>

namespace {
// Parsing is the larger part of the work; converting the matches the rest.
constexpr int parseShare = 800;

QString text(const YAML::Node& scalar) {
    return QString::fromStdString(scalar.Scalar());
}

// A key that is missing is no kind here.
using Entry = std::optional<YAML::Node>;
bool isScalar(const Entry& node) {
    return node && node->IsScalar();
}
bool isSequence(const Entry& node) {
    return node && node->IsSequence();
}

// Thrown when the file expands past a limit; carries the message.
struct OverLimit {
    QString message;
};

// The keys of one match that the import reads. Looked up in one pass over the mapping, by
// comparing key text in place (yaml-cpp's own lookup copies every key it compares, a large
// one named by an alias included).
struct MatchKeys {
    Entry trigger, triggers, replace, word;
};

// Counts what converting the file visits and makes, against the limits.
class Budget {
public:
    explicit Budget(const QString& path) : m_path(path) {}

    void visit(qint64 nodes = 1) {
        m_nodes += nodes;
        if (m_nodes > EspansoMatchFile::maxNodes)
            throw OverLimit{
                EspansoMatchFile::tr("%1 leads to more than %2 entries once its aliases are "
                                     "followed, more than Typolet imports from one file.")
                    .arg(m_path, QLocale().toString(EspansoMatchFile::maxNodes))};
    }
    void take(qint64 bytes) {
        m_text += bytes;
        if (m_text > EspansoMatchFile::maxText)
            throw OverLimit{
                EspansoMatchFile::tr("%1 makes more than %2 MB of snippet text once its aliases "
                                     "are followed, more than Typolet imports from one file.")
                    .arg(m_path)
                    .arg(EspansoMatchFile::maxText >> 20)};
    }

private:
    const QString& m_path;
    qint64 m_nodes = 0;
    qint64 m_text = 0;
};

// The first of a repeated key counts, as in a lookup. (Slots are filled by emplace: assigning
// to a YAML::Node that refers to a node overwrites the node referred to.)
void collect(const YAML::Node& map, std::initializer_list<std::pair<const char*, Entry*>> wanted,
             Budget& budget) {
    for (const auto& entry : map) {
        budget.visit();
        if (!entry.first.IsScalar())
            continue;
        const std::string& key = entry.first.Scalar();
        for (const auto& [name, slot] : wanted) {
            if (!*slot && key == name)
                slot->emplace(entry.second);
        }
    }
}

MatchKeys keysOf(const YAML::Node& match, Budget& budget) {
    MatchKeys keys;
    collect(match,
            {{"trigger", &keys.trigger},
             {"triggers", &keys.triggers},
             {"replace", &keys.replace},
             {"word", &keys.word}},
            budget);
    return keys;
}

// The triggers of one match, or none when it has no usable trigger.
QList<const std::string*> triggersOf(const MatchKeys& keys, Budget& budget) {
    if (isScalar(keys.trigger))
        return {&keys.trigger->Scalar()};
    QList<const std::string*> triggers;
    if (!isSequence(keys.triggers))
        return {};
    for (const YAML::Node& item : *keys.triggers) {
        budget.visit();
        if (!isScalar(item))
            return {};
        triggers.append(&item.Scalar());
    }
    return triggers;
}
} // namespace

ImportPlan EspansoMatchFile::read(const QString& path, ImportReader& reader) {
    QByteArray data;
    if (const auto error = reader.readFile(path, data))
        return ImportPlan::failure(path, *error);
    return decode(path, data, reader);
}

ImportPlan EspansoMatchFile::decode(const QString& path, const QByteArray& yaml,
                                    ImportReader& reader) {
    const Category category = Category::create(QFileInfo(path).completeBaseName());
    ImportPlan plan;
    plan.source = path;
    plan.categories.append(category);
    try {
        YamlInputBuffer buffer(yaml, reader, parseShare);
        std::istream input(&buffer);
        const YAML::Node root = YAML::Load(input);
        // What the parser made of a cut-off input is not looked at.
        if (reader.cancelled())
            return ImportPlan::failure(path, ImportReader::cancelledMessage());
        Budget budget(path);
        Entry matches;
        if (root.IsMap())
            collect(root, {{"matches", &matches}}, budget);
        if (!isSequence(matches))
            return ImportPlan::failure(
                path, tr("%1 has no \u201Cmatches\u201D list, so it holds no snippets to import.")
                          .arg(path));
        const qint64 count = qint64(matches->size());
        qint64 done = 0;
        for (const YAML::Node& match : *matches) {
            budget.visit();
            reader.report(parseShare * count + (1000 - parseShare) * done++, 1000 * count);
            if (reader.cancelled())
                return ImportPlan::failure(path, ImportReader::cancelledMessage());
            const MatchKeys keys = match.IsMap() ? keysOf(match, budget) : MatchKeys{};
            const auto triggers =
                isScalar(keys.replace) ? triggersOf(keys, budget) : QList<const std::string*>();
            if (triggers.isEmpty()) {
                ++plan.skipped;
                continue;
            }
            // Each snippet holds a copy of the content once it is stored, so each counts.
            const qint64 contentSize = qint64(keys.replace->Scalar().size());
            for (const std::string* trigger : triggers)
                budget.take(qint64(trigger->size()) + contentSize);
            // `word: true` waits for the word around the trigger to end, as our option does.
            const bool wholeWord = isScalar(keys.word) && keys.word->Scalar() == "true";
            const QString content = text(*keys.replace);
            for (const std::string* trigger : triggers)
                plan.addSnippet(Snippet::create(
                    QString::fromStdString(*trigger), content, category.id,
                    wholeWord ? Snippet::Trigger::AfterWordEnd : Snippet::Trigger::Immediately));
        }
        // A file with nothing usable brings no empty category either.
        if (plan.snippets.isEmpty())
            plan.categories.clear();
    } catch (const OverLimit& over) {
        return ImportPlan::failure(path, over.message);
    } catch (const YAML::Exception& error) {
        if (reader.cancelled())
            return ImportPlan::failure(path, ImportReader::cancelledMessage());
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
