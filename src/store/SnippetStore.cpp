#include "SnippetStore.h"

#include "Logging.h"
#include "RecordCodec.h"
#include "SettingsFile.h"

#include <QDateTime>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QSet>
#include <QSettings>
#include <QVariant>


SnippetStore::SnippetStore(const QString& settingsFile, QObject* parent)
    : QObject(parent),
      m_settings(SettingsFile::open(settingsFile)) {
    loadCategories();
    loadSnippets();
    for (const Category& category : std::as_const(m_categories)) {
        if (category.id == Category::defaultCategoryId)
            return;
    }
    QList<Category> categories = m_categories;
    categories.append(defaultCategory());
    setCategories(std::move(categories));
    saveCategories();
}

SnippetStore::~SnippetStore() = default;

QString SnippetStore::settingsPath() const { return m_settings->fileName(); }

void SnippetStore::setSnippets(QList<Snippet> snippets) {
    m_snippets = std::move(snippets);
    ++m_snippetsRevision;
    emit snippetsChanged();
}

bool SnippetStore::isBlankCommand(const QString& command) {
    return command.trimmed().isEmpty();
}

void SnippetStore::appendSnippet(const Snippet& snippet) {
    if (isBlankCommand(snippet.command)) {
        qCWarning(lcStore).noquote() << QStringLiteral("Refused a snippet with a blank command");
        return;
    }
    m_snippets.append(snippet);
    ++m_snippetsRevision;
    emit snippetsChanged();
}

std::optional<DataError> SnippetStore::commandError(const QString& command,
                                                           const QUuid& snippetId) const {
    if (isBlankCommand(command))
        return DataError::blankCommand();
    for (const Snippet& other : m_snippets) {
        if (other.command == command && other.id != snippetId)
            return DataError::duplicateCommand();
    }
    return std::nullopt;
}

namespace {
// Whether typing `longer` passes through the end of `shorter` before its own end, where
// `shorter` would fire: at once, or when a word ends right after it.
bool expandsWhileTyping(const QString& shorter, Snippet::Trigger trigger, const QString& longer) {
    for (qsizetype at = longer.indexOf(shorter); at >= 0; at = longer.indexOf(shorter, at + 1)) {
        const qsizetype end = at + shorter.size();
        if (end >= longer.size())
            continue;
        if (trigger == Snippet::Trigger::Immediately)
            return true;
        const qsizetype next = longer.at(end).isHighSurrogate() ? 2 : 1;
        if (Snippet::endsWord(QStringView(longer).mid(end, next)))
            return true;
    }
    return false;
}
} // namespace

SnippetStore::CommandClash SnippetStore::commandClash(const QString& command,
                                                      const QUuid& snippetId,
                                                      Snippet::Trigger trigger) const {
    if (isBlankCommand(command))
        return {};
    for (const Snippet& other : m_snippets) {
        if (other.id == snippetId || other.command == command || isBlankCommand(other.command))
            continue;
        if (expandsWhileTyping(other.command, other.trigger, command))
            return {tr("\u201C%1\u201D expands while \u201C%2\u201D is typed, so \u201C%2\u201D "
                       "cannot be typed.")
                        .arg(other.command, command),
                    other.command, other.id};
        if (expandsWhileTyping(command, trigger, other.command))
            return {tr("\u201C%1\u201D expands while \u201C%2\u201D is typed, so \u201C%2\u201D "
                       "cannot be typed any more.")
                        .arg(command, other.command),
                    command, QUuid()};
    }
    return {};
}

std::optional<DataError> SnippetStore::addSnippet(const Snippet& snippet) {
    if (const auto error = commandError(snippet.command, snippet.id))
        return error;
    appendSnippet(snippet);
    return saved(saveSnippets());
}

std::optional<DataError> SnippetStore::removeSnippet(const QUuid& id) {
    if (m_snippets.removeIf([&](const Snippet& s) { return s.id == id; }) == 0)
        return std::nullopt;
    ++m_snippetsRevision;
    emit snippetsChanged();
    return saved(saveSnippets());
}

std::optional<DataError> SnippetStore::saved(const std::optional<QString>& saveError) {
    return saveError ? std::optional(DataError::notSaved(*saveError)) : std::nullopt;
}

void SnippetStore::setCategories(QList<Category> categories) {
    m_categories = std::move(categories);
    emit categoriesChanged();
}

std::optional<Category> SnippetStore::category(const QUuid& id) const {
    for (const Category& category : m_categories) {
        if (category.id == id)
            return category;
    }
    return {};
}

bool SnippetStore::isDuplicateCategoryName(const QString& name,
                                                  std::optional<QUuid> excluding) const {
    // Full Unicode lower-casing, no trimming: "Work" clashes with "work", not with " Work".
    const QString candidate = name.toLower();
    for (const Category& category : m_categories) {
        if (excluding && category.id == *excluding)
            continue;
        if (category.name.toLower() == candidate)
            return true;
    }
    return false;
}

std::optional<DataError> SnippetStore::addCategory(const QString& name) {
    if (isDuplicateCategoryName(name, std::nullopt))
        return DataError::duplicateCategoryName();
    QList<Category> categories = m_categories;
    categories.append(Category::create(name));
    setCategories(std::move(categories));
    return saved(saveCategories());
}

std::optional<DataError> SnippetStore::updateCategory(const Category& category,
                                                             const QString& newName) {
    if (isDuplicateCategoryName(newName, category.id))
        return DataError::duplicateCategoryName();
    const auto found = std::find_if(m_categories.cbegin(), m_categories.cend(),
                                    [&](const Category& c) { return c.id == category.id; });
    if (found == m_categories.cend())
        return std::nullopt;
    QList<Category> categories = m_categories;
    categories[found - m_categories.cbegin()] =
        Category(category.id, newName, category.createdAt);
    setCategories(std::move(categories));
    return saved(saveCategories());
}

std::optional<DataError> SnippetStore::deleteCategory(const Category& category) {
    const QUuid id = category.id; // `category` may refer into the list changed below
    if (id == Category::defaultCategoryId)
        return std::nullopt;
    QList<Snippet> snippets = m_snippets;
    snippets.removeIf([&](const Snippet& s) { return s.categoryId == id; });
    setSnippets(std::move(snippets));
    QList<Category> categories = m_categories;
    categories.removeIf([&](const Category& c) { return c.id == id; });
    setCategories(std::move(categories));
    // One write carries both lists when the first fails (see write()).
    const std::optional<QString> categoriesError = saveCategories();
    const std::optional<QString> snippetsError = saveSnippets();
    return saved(snippetsError ? snippetsError : categoriesError);
}

std::optional<Snippet> SnippetStore::snippetWithCommand(const QString& command) const {
    for (const Snippet& snippet : m_snippets) {
        if (snippet.command == command)
            return snippet;
    }
    return std::nullopt;
}

std::optional<DataError> SnippetStore::importSnippets(const ImportPlan& plan) {
    if (plan.failed())
        return DataError::unreadableImport(plan.error);

    // What becomes of each candidate, decided against the library as it is before the import
    // (candidates never clash with each other).
    enum class Action { skip, add, replace };
    QHash<QString, qsizetype> existingCommands;
    for (qsizetype i = m_snippets.size() - 1; i >= 0; --i)
        existingCommands.insert(m_snippets[i].command, i);
    QList<Action> actions;
    QHash<QUuid, int> candidatesIn, addedIn; // by the plan's category id
    for (qsizetype i = 0; i < plan.snippets.size(); ++i) {
        const Snippet& candidate = plan.snippets[i];
        const auto resolution = plan.resolutions.value(i, ImportPlan::Resolution::skip);
        Action action = Action::add;
        if (isBlankCommand(candidate.command))
            action = Action::skip;
        else if (existingCommands.contains(candidate.command))
            action = resolution == ImportPlan::Resolution::keepBoth ? Action::add
                     : resolution == ImportPlan::Resolution::replace ? Action::replace
                                                                     : Action::skip;
        actions.append(action);
        ++candidatesIn[candidate.categoryId];
        if (action == Action::add)
            ++addedIn[candidate.categoryId];
    }

    // A record keeps the id it comes with unless that id is taken: two records with one id
    // would be one record to every lookup.
    QSet<QUuid> categoryIdsInUse, snippetIdsInUse;
    for (const Category& category : std::as_const(m_categories))
        categoryIdsInUse.insert(category.id);
    for (const Snippet& snippet : std::as_const(m_snippets))
        snippetIdsInUse.insert(snippet.id);
    const auto freeId = [](QSet<QUuid>& inUse, const QUuid& wanted) {
        const QUuid id = inUse.contains(wanted) ? QUuid::createUuid() : wanted;
        inUse.insert(id);
        return id;
    };

    QList<Category> categories = m_categories;
    QHash<QUuid, QUuid> categoryIds; // the plan's id -> the store's
    for (const Category& imported : plan.categories) {
        if (categoryIds.contains(imported.id))
            continue;
        const QString name = imported.name.toLower();
        const auto same = std::find_if(categories.cbegin(), categories.cend(),
                                       [&](const Category& c) { return c.name.toLower() == name; });
        if (same != categories.cend()) {
            categoryIds.insert(imported.id, same->id);
        } else if (candidatesIn.value(imported.id) == 0 || addedIn.value(imported.id) > 0) {
            const QUuid id = freeId(categoryIdsInUse, imported.id);
            categories.append(Category(id, imported.name, imported.createdAt));
            categoryIds.insert(imported.id, id);
        }
    }
    const auto storeCategory = [&](const QUuid& planId) {
        if (const auto found = categoryIds.constFind(planId); found != categoryIds.cend())
            return *found;
        return category(planId) ? planId : Category::defaultCategoryId;
    };

    QList<Snippet> snippets = m_snippets;
    bool snippetsChanged = false;
    for (qsizetype i = 0; i < plan.snippets.size(); ++i) {
        const Snippet& candidate = plan.snippets[i];
        if (actions[i] == Action::replace) {
            snippets[existingCommands.value(candidate.command)].content = candidate.content;
            snippetsChanged = true;
        } else if (actions[i] == Action::add) {
            snippets.append(Snippet(freeId(snippetIdsInUse, candidate.id), candidate.command,
                                    candidate.content, candidate.createdAt,
                                    storeCategory(candidate.categoryId)));
            snippets.last().trigger = candidate.trigger;
            snippetsChanged = true;
        }
    }

    const bool categoriesChanged = categories.size() != m_categories.size();
    if (categoriesChanged)
        setCategories(std::move(categories));
    if (snippetsChanged)
        setSnippets(std::move(snippets));
    // One save of each list that changed; a failed write keeps its list for the next one
    // (see write()), so the snippets' save carries the categories too.
    const std::optional<QString> categoriesError =
        categoriesChanged ? saveCategories() : std::nullopt;
    const std::optional<QString> snippetsError = snippetsChanged ? saveSnippets() : std::nullopt;
    return saved(snippetsError ? snippetsError : categoriesError);
}

std::optional<DataError> SnippetStore::updateSnippet(const Snippet& snippet,
                                                             const QString& command,
                                                             const QString& content,
                                                             std::optional<QUuid> categoryId,
                                                             std::optional<Snippet::Trigger> trigger) {
    if (const auto error = commandError(command, snippet.id))
        return error;
    const auto found = std::find_if(m_snippets.cbegin(), m_snippets.cend(),
                                    [&](const Snippet& s) { return s.id == snippet.id; });
    if (found == m_snippets.cend())
        return std::nullopt;
    const qsizetype index = found - m_snippets.cbegin();
    const Snippet::Trigger keptTrigger = m_snippets[index].trigger;
    m_snippets[index] = Snippet(snippet.id, command, content, snippet.createdAt,
                                  categoryId.value_or(snippet.categoryId));
    m_snippets[index].trigger = trigger.value_or(keptTrigger);
    ++m_snippetsRevision;
    emit snippetsChanged();
    return saved(saveSnippets());
}

std::optional<QString> SnippetStore::write(const char* key, const QByteArray& data) {
    // A list whose last save failed goes out again with this one.
    m_unsaved.insert(QLatin1String(key), data);
    const std::optional<QString> error = SettingsFile::save(*m_settings, m_unsaved);
    if (!error) {
        m_unsaved.clear();
        return std::nullopt;
    }
    // Shown where the change was made, and logged.
    QStringList lists = m_unsaved.keys();
    lists.removeAll(QLatin1String(afterWordEndKey)); // part of the snippets to the user
    const QString message = tr("Could not save %1 to %2: %3")
                                .arg(lists.join(tr(" and ")),
                                     settingsPath(), *error);
    qCWarning(lcStore).noquote() << message;
    emit saveFailed(message);
    return message;
}

std::optional<QString> SnippetStore::saveSnippets() {
    const auto data = m_snippetEncoder.encode(m_snippets);
    if (!data)
        return std::nullopt;
    // Goes out in the same write as the list, so the two never disagree on disk.
    m_unsaved.insert(QLatin1String(afterWordEndKey),
                     QJsonDocument(RecordCodec::afterWordEndIds(m_snippets))
                         .toJson(QJsonDocument::Compact));
    std::optional<QString> error = write(snippetsKey, *data);
    // Observers run after the action that saved has finished; the list they get is the one
    // current at delivery.
    QMetaObject::invokeMethod(
        this, [this] { emit snippetsSaved(m_snippets); }, Qt::QueuedConnection);
    return error;
}

std::optional<QString> SnippetStore::saveCategories() {
    const auto data = RecordCodec::encodeCategories(m_categories);
    if (!data)
        return std::nullopt;
    return write(categoriesKey, *data);
}

void SnippetStore::loadSnippets() {
    const QVariant value = m_settings->value(QLatin1String(snippetsKey));
    if (!value.isValid())
        return;
    int unreadable = 0;
    auto snippets = value.typeId() == QMetaType::QByteArray
                         ? RecordCodec::decodeSnippets(value.toByteArray(), &unreadable)
                         : std::nullopt;
    if (!snippets || unreadable > 0)
        noteUnreadable(QLatin1String(snippetsKey), snippets ? unreadable : -1);
    if (!snippets)
        return;
    // Unreadable, it only loses the waiting: every snippet then fires at once.
    RecordCodec::markAfterWordEnd(
        QJsonDocument::fromJson(m_settings->value(QLatin1String(afterWordEndKey)).toByteArray())
            .array(),
        *snippets);
    setSnippets(std::move(*snippets));
}

void SnippetStore::loadCategories() {
    const QVariant value = m_settings->value(QLatin1String(categoriesKey));
    if (!value.isValid())
        return;
    int unreadable = 0;
    auto categories = value.typeId() == QMetaType::QByteArray
                          ? RecordCodec::decodeCategories(value.toByteArray(), &unreadable)
                          : std::nullopt;
    if (!categories || unreadable > 0)
        noteUnreadable(QLatin1String(categoriesKey), categories ? unreadable : -1);
    if (categories)
        setCategories(std::move(*categories));
}

void SnippetStore::noteUnreadable(const QString& key, int records) {
    m_unreadableRecords += std::max(records, 1);
    const QString what = records < 0 ? QStringLiteral("none of the %1 could be read").arg(key)
                                     : QStringLiteral("%1 of the %2 could not be read")
                                           .arg(records)
                                           .arg(key);
    // The next save rewrites the file: first keep it as it is, once, beside it.
    if (m_backupPath.isEmpty()) {
        const QString backup = settingsPath() + QStringLiteral(".unreadable-") +
                               QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
        if (QFile::copy(settingsPath(), backup))
            m_backupPath = backup;
    }
    qCWarning(lcStore).noquote() << QStringLiteral("In %1 %2; the file as it was is kept in %3")
                                        .arg(settingsPath(), what,
                                             m_backupPath.isEmpty() ? QStringLiteral("(no copy could be made)")
                                                                    : m_backupPath);
}
