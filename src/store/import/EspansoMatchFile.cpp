#include "EspansoMatchFile.h"

#include "ImportReader.h"
#include "YamlInputBuffer.h"

#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
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
    Entry trigger, triggers, replace, word, vars, propagateCase, regex, image, form, formFields;
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
             {"word", &keys.word},
             {"vars", &keys.vars},
             {"propagate_case", &keys.propagateCase},
             {"regex", &keys.regex},
             {"image_path", &keys.image},
             {"form", &keys.form},
             {"form_fields", &keys.formFields}},
            budget);
    return keys;
}

// A strftime format as a QDateTime one: the common conversions; other letters are quoted,
// so they are typed as they stand (punctuation, digits and spaces need no quotes).
QString qtDateFormat(const QString& strftime) {
    static const QHash<QChar, QString> conversions{
        {u'Y', QStringLiteral("yyyy")}, {u'y', QStringLiteral("yy")}, {u'm', QStringLiteral("MM")},
        {u'd', QStringLiteral("dd")},   {u'e', QStringLiteral("d")},  {u'H', QStringLiteral("HH")},
        {u'I', QStringLiteral("hh")},   {u'M', QStringLiteral("mm")}, {u'S', QStringLiteral("ss")},
        {u'p', QStringLiteral("AP")},   {u'b', QStringLiteral("MMM")}, {u'B', QStringLiteral("MMMM")},
        {u'a', QStringLiteral("ddd")},  {u'A', QStringLiteral("dddd")}};
    QString format, literal;
    const auto flush = [&] {
        if (!literal.isEmpty())
            format += QLatin1Char('\'') + QString(literal).replace(QLatin1Char('\''), QStringLiteral("''")) +
                      QLatin1Char('\'');
        literal.clear();
    };
    for (qsizetype i = 0; i < strftime.size(); ++i) {
        if (strftime[i] == u'%' && i + 1 < strftime.size() && conversions.contains(strftime[i + 1])) {
            flush();
            format += conversions.value(strftime[++i]);
        } else if (strftime[i] == u'%' && i + 1 < strftime.size() && strftime[i + 1] == u'%') {
            literal += QLatin1Char('%');
            ++i;
        } else if (strftime[i].isLetter() || strftime[i] == u'\'') {
            literal += strftime[i]; // a letter would be read as a field
        } else {
            flush();
            format += strftime[i];
        }
    }
    flush();
    return format;
}

// Variables whose value is a program's output: a snippet that uses one is left out, since
// typing the rest would type something else than the user meant.
bool runsAProgram(const std::string& kind) {
    return kind == "shell" || kind == "script";
}

// `content` with every match of `pattern` replaced by `value` as it stands (a regular
// expression's replacement would read backslashes in it).
QString replacedLiterally(const QString& content, const QRegularExpression& pattern,
                          const QString& value) {
    QString result;
    qsizetype from = 0;
    for (const auto& found : pattern.globalMatch(content)) {
        result += QStringView(content).sliced(from, found.capturedStart() - from);
        result += value;
        from = found.capturedEnd();
    }
    result += QStringView(content).sliced(from);
    return result;
}

// A form's field as our placeholder: `described` is its entry under `form_fields` (or a form
// variable's `fields`), if any. A list of `values` (type `choice` or `list`) is a choice,
// `multiline: true` several lines, a `default` the field's default; anything else a plain field.
QString formField(const QString& name, const Entry& described, Budget& budget) {
    Entry values, multiline, byDefault;
    if (described && described->IsMap())
        collect(*described, {{"values", &values}, {"multiline", &multiline}, {"default", &byDefault}},
                budget);
    // A placeholder lives on one line and ends at the first }}.
    const auto clean = [](QString value) {
        return value.replace(QLatin1Char('\n'), QLatin1Char(' ')).remove(QStringLiteral("}}"));
    };
    if (isSequence(values)) {
        QStringList choices;
        for (const YAML::Node& value : *values) {
            budget.visit();
            if (value.IsScalar())
                choices.append(clean(text(value))
                                   .replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
                                   .replace(QLatin1Char('|'), QStringLiteral("\\|")));
        }
        if (!choices.isEmpty())
            return QStringLiteral("{{choice:%1=%2}}").arg(name, choices.join(QLatin1Char('|')));
    }
    const QString kind = isScalar(multiline) && multiline->Scalar() == "true"
                             ? QStringLiteral("area")
                             : QStringLiteral("field");
    if (isScalar(byDefault))
        return QStringLiteral("{{%1:%2=%3}}").arg(kind, name, clean(text(*byDefault)));
    return QStringLiteral("{{%1:%2}}").arg(kind, name);
}

// The placeholder of each field a form names (`fields`: the form's `form_fields`), by name.
QHash<QString, QString> formFieldsOf(const QString& layout, const Entry& fields, Budget& budget) {
    QHash<QString, Entry> descriptions;
    if (fields && fields->IsMap()) {
        for (const auto& entry : *fields) {
            budget.visit();
            if (entry.first.IsScalar())
                descriptions.insert(text(entry.first), Entry(entry.second));
        }
    }
    QHash<QString, QString> placeholders;
    static const QRegularExpression field(QStringLiteral("\\[\\[\\s*([\\w-]+)\\s*\\]\\]"));
    for (const auto& use : field.globalMatch(layout)) {
        const QString name = use.captured(1);
        if (!placeholders.contains(name))
            placeholders.insert(name, formField(name, descriptions.value(name), budget));
    }
    for (auto it = descriptions.cbegin(); it != descriptions.cend(); ++it)
        if (!placeholders.contains(it.key()))
            placeholders.insert(it.key(), formField(it.key(), it.value(), budget));
    return placeholders;
}

// A form match's layout as a content: [[name]] becomes the field's placeholder, and braces are
// literal ones.
QString formContent(const QString& layout, const QHash<QString, QString>& fields) {
    QString content = QString(layout).replace(QStringLiteral("{{"), QStringLiteral("{{{{"));
    for (auto it = fields.cbegin(); it != fields.cend(); ++it)
        content = replacedLiterally(
            content,
            QRegularExpression(QStringLiteral("\\[\\[\\s*%1\\s*\\]\\]")
                                   .arg(QRegularExpression::escape(it.key()))),
            it.value());
    return content;
}

// What each variable of a match (or of the file) becomes in the content: a placeholder of
// ours, or its echoed text; those of other kinds stay as written and are named in `unknown`,
// those that run a program are named in `programs` ("name (shell)"). A form variable's
// fields, used as {{form1.name}}, become form fields.
void readVars(const Entry& vars, QHash<QString, QString>& values, QStringList& unknown,
              QStringList& programs, Budget& budget) {
    if (!isSequence(vars))
        return;
    for (const YAML::Node& var : *vars) {
        budget.visit();
        if (!var.IsMap())
            continue;
        Entry name, type, params;
        collect(var, {{"name", &name}, {"type", &type}, {"params", &params}}, budget);
        if (!isScalar(name) || !isScalar(type))
            continue;
        Entry format, echo, layout, fields;
        if (params && params->IsMap())
            collect(*params,
                    {{"format", &format}, {"echo", &echo}, {"layout", &layout}, {"fields", &fields}},
                    budget);
        const std::string& kind = type->Scalar();
        if (kind == "date")
            values.insert(text(*name), isScalar(format)
                                           ? QStringLiteral("{{date:%1}}").arg(qtDateFormat(text(*format)))
                                           : QStringLiteral("{{date}}"));
        else if (kind == "form" && isScalar(layout)) {
            const auto placeholders = formFieldsOf(text(*layout), fields, budget);
            for (auto it = placeholders.cbegin(); it != placeholders.cend(); ++it)
                values.insert(text(*name) + QLatin1Char('.') + it.key(), it.value());
        } else if (kind == "clipboard")
            values.insert(text(*name), QStringLiteral("{{clipboard}}"));
        else if (kind == "echo" && isScalar(echo))
            // Braces in the echoed text are literal ones.
            values.insert(text(*name), text(*echo).replace(QStringLiteral("{{"), QStringLiteral("{{{{")));
        else if (const QString named = QStringLiteral("%1 (%2)").arg(text(*name), text(*type));
                 runsAProgram(kind))
            programs.append(named);
        else if (!unknown.contains(named))
            unknown.append(named);
    }
}

// `content` with each {{name}} (spaces inside the braces allowed) of a known variable replaced.
QString withValues(QString content, const QHash<QString, QString>& values) {
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        const QRegularExpression use(QStringLiteral("\\{\\{\\s*%1\\s*\\}\\}")
                                         .arg(QRegularExpression::escape(it.key())));
        content = replacedLiterally(content, use, it.value());
    }
    return content;
}

// Whether `content` uses the variable of a "name (kind)" entry.
bool uses(const QString& content, const QString& named) {
    const QString name = named.section(QLatin1Char(' '), 0, 0);
    return content.contains(QRegularExpression(
        QStringLiteral("\\{\\{\\s*%1\\s*\\}\\}").arg(QRegularExpression::escape(name))));
}

// The applications a `filter_class` pattern names: a class ("Gedit"), anchored or not
// ("^Gedit$"), or several as alternatives ("Alacritty|kitty", "(Alacritty|kitty)"); "(?i)" is
// what our comparison does anyway. Any other regular expression gives nothing.
std::optional<QStringList> classNames(QString pattern) {
    if (pattern.startsWith(QLatin1String("(?i)")))
        pattern.remove(0, 4);
    if (pattern.startsWith(QLatin1Char('^')) && pattern.endsWith(QLatin1Char('$'))) {
        pattern.chop(1);
        pattern.remove(0, 1);
    }
    if (pattern.startsWith(QLatin1String("(?:")) && pattern.endsWith(QLatin1Char(')')))
        pattern = pattern.mid(3, pattern.size() - 4);
    else if (pattern.startsWith(QLatin1Char('(')) && pattern.endsWith(QLatin1Char(')')))
        pattern = pattern.mid(1, pattern.size() - 2);
    QStringList names;
    for (QString name : pattern.split(QLatin1Char('|'))) {
        if (name.startsWith(QLatin1Char('^')))
            name.remove(0, 1);
        if (name.endsWith(QLatin1Char('$')))
            name.chop(1);
        // An escaped dot or hyphen is that character; an unescaped dot is read as one too, as
        // class names such as "org.gnome.Nautilus" are written that way.
        name.replace(QLatin1String("\\."), QLatin1String(".")).replace(QLatin1String("\\-"), QLatin1String("-"));
        static const QRegularExpression special(QStringLiteral("[*+?\\[\\](){}\\\\^$\\s]"));
        if (name.isEmpty() || name.contains(special))
            return std::nullopt;
        names.append(name);
    }
    return names;
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
        Entry matches, globals, filterClass, filterTitle, filterExec;
        if (root.IsMap())
            collect(root,
                    {{"matches", &matches},
                     {"global_vars", &globals},
                     {"filter_class", &filterClass},
                     {"filter_title", &filterTitle},
                     {"filter_exec", &filterExec}},
                    budget);
        // A file for some applications only: its snippets go to a category limited to them.
        // A filter Typolet cannot follow refuses the file rather than let its snippets expand
        // everywhere.
        if (filterTitle || filterExec)
            return ImportPlan::failure(
                path, tr("%1 keeps its snippets to windows by title or by program "
                         "(filter_title, filter_exec), which Typolet cannot follow; nothing was "
                         "imported. Only filter_class, the window class, can be imported.")
                          .arg(path));
        if (filterClass) {
            const auto names = isScalar(filterClass) ? classNames(text(*filterClass)) : std::nullopt;
            if (!names)
                return ImportPlan::failure(
                    path, tr("%1 keeps its snippets to the applications of a regular expression "
                             "(filter_class), which Typolet cannot follow; nothing was imported. "
                             "Typolet reads a class name or names separated by \u201C|\u201D, "
                             "such as Gedit or Alacritty|kitty.")
                              .arg(path));
            plan.categories.first().limit = {Category::Limit::Kind::onlyIn, *names};
        }
        QHash<QString, QString> globalValues;
        QStringList unknownGlobals; // named only where a match uses them
        QStringList programGlobals;
        readVars(globals, globalValues, unknownGlobals, programGlobals, budget);
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
            // A form match types its layout with the fields filled in.
            const Entry& body = isScalar(keys.replace) ? keys.replace : keys.form;
            const auto triggers =
                isScalar(body) ? triggersOf(keys, budget) : QList<const std::string*>();
            if (triggers.isEmpty()) {
                ++plan.skipped;
                // Named by what the user typed for it, with what it needs.
                if (isScalar(keys.regex))
                    plan.leftOut.append(tr("%1 (regular expression)").arg(text(*keys.regex)));
                else if (keys.image && (isScalar(keys.trigger) || isSequence(keys.triggers)))
                    if (const auto named = triggersOf(keys, budget); !named.isEmpty())
                        plan.leftOut.append(tr("%1 (image)").arg(QString::fromStdString(*named.first())));
                continue;
            }
            // Each snippet holds a copy of the content once it is stored, so each counts.
            const qint64 contentSize = qint64(body->Scalar().size());
            for (const std::string* trigger : triggers)
                budget.take(qint64(trigger->size()) + contentSize);
            // `word: true` waits for the word around the trigger to end, as our option does.
            const bool wholeWord = isScalar(keys.word) && keys.word->Scalar() == "true";
            QHash<QString, QString> values = globalValues;
            QStringList programs;
            readVars(keys.vars, values, plan.typedAsWritten, programs, budget);
            const QString written =
                isScalar(keys.replace)
                    ? text(*keys.replace)
                    : formContent(text(*body), formFieldsOf(text(*body), keys.formFields, budget));
            for (const QString& global : std::as_const(programGlobals))
                if (!values.contains(global.section(QLatin1Char(' '), 0, 0)))
                    programs.append(global);
            programs.removeIf([&](const QString& named) { return !uses(written, named); });
            if (!programs.isEmpty()) {
                ++plan.skipped;
                const QString kind = programs.first().section(QLatin1Char('('), 1).chopped(1);
                plan.leftOut.append(QStringLiteral("%1 (%2)")
                                        .arg(QString::fromStdString(*triggers.first()), kind));
                continue;
            }
            for (const QString& global : std::as_const(unknownGlobals))
                if (written.contains(QStringLiteral("{{") + global.section(QLatin1Char(' '), 0, 0)) &&
                    !plan.typedAsWritten.contains(global))
                    plan.typedAsWritten.append(global);
            const QString content = withValues(written, values);
            // `propagate_case: true` is our "Match the command's case".
            const bool matchCase =
                isScalar(keys.propagateCase) && keys.propagateCase->Scalar() == "true";
            for (const std::string* trigger : triggers) {
                Snippet snippet = Snippet::create(
                    QString::fromStdString(*trigger), content, category.id,
                    wholeWord ? Snippet::Trigger::AfterWordEnd : Snippet::Trigger::Immediately);
                snippet.matchCase = matchCase;
                plan.addSnippet(snippet);
            }
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
