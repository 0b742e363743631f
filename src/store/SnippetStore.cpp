#include "SnippetStore.h"

#include "CommandCase.h"
#include "Logging.h"
#include "ImportMerge.h"
#include "LibraryContent.h"
#include "RecordCodec.h"

#include <QDateTime>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QSet>
#include <QVariant>

SnippetStore::SnippetStore(const QString& settingsFile, QObject* parent)
    : SnippetStore(*new LibraryFile(settingsFile), parent) {
    m_ownFile.reset(m_file);
}

SnippetStore::SnippetStore(LibraryFile& file, QObject* parent)
    : QObject(parent), m_file(&file) {
    connect(m_file, &LibraryFile::saveFailed, this,
            [this](const QString& message) { emit saveFailed(DataError::notSaved(message)); });
    connect(m_file, &LibraryFile::saved, this, &SnippetStore::allSaved);
    // Direct: the lists must be the merged ones before anything saves again, or a save would
    // take the outside change for something this side deleted.
    connect(m_file, &LibraryFile::changedOutside, this, &SnippetStore::takeOutsideChanges);
    loadCategories();
    loadSnippets();
    ensureDefaultCategory();
}

SnippetStore::~SnippetStore() {
    // The file this store made goes after the store's connections to it.
    disconnect(m_file, nullptr, this, nullptr);
}

void SnippetStore::ensureDefaultCategory() {
    for (const Category& category : std::as_const(m_categories)) {
        if (category.id == Category::defaultCategoryId)
            return;
    }
    QList<Category> categories = m_categories;
    categories.append(defaultCategory());
    setCategories(std::move(categories));
    // Not over a file that cannot be read: the category is in memory until it can be.
    if (m_file->readError().isEmpty())
        saveCategories();
}

void SnippetStore::takeOutsideChanges(const QStringList& keys) {
    if (keys.contains(QLatin1String(categoriesKey))) {
        loadCategories();
        ensureDefaultCategory();
    }
    if (keys.contains(QLatin1String(snippetsKey)) || keys.contains(QLatin1String(afterWordEndKey)))
        loadSnippets();
}

QString SnippetStore::settingsPath() const { return m_file->path(); }

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

Category::Limit SnippetStore::limitOf(const QUuid& categoryId) const {
    const std::optional<Category> found = category(categoryId);
    return found ? found->limit : Category::Limit{};
}

bool SnippetStore::anyCategoryLimited() const {
    return std::any_of(m_categories.cbegin(), m_categories.cend(),
                       [](const Category& c) { return c.limit.limits(); });
}

std::optional<DataError> SnippetStore::commandError(const QString& command,
                                                    const QUuid& snippetId,
                                                    const QUuid& categoryId,
                                                    bool matchCase) const {
    if (isBlankCommand(command))
        return DataError::blankCommand();
    std::optional<Category::Limit> limit; // looked up at the first command that clashes
    for (const Snippet& other : m_snippets) {
        if (other.id == snippetId)
            continue;
        const bool same = other.command == command;
        if (!same && !((matchCase || other.matchCase) &&
                       CommandCase::differOnlyInCase(other.command, command)))
            continue;
        if (!limit)
            limit = limitOf(categoryId);
        if (!limit->overlaps(limitOf(other.categoryId)))
            continue;
        return same ? DataError::duplicateCommand() : DataError::commandDiffersInCase(other.command);
    }
    return std::nullopt;
}

std::optional<DataError> SnippetStore::overlapIn(const QList<Snippet>& snippets,
                                                 const QList<Category>& categories,
                                                 const QSet<QUuid>& changed) {
    QHash<QUuid, Category::Limit> limits;
    for (const Category& category : categories) {
        if (!limits.contains(category.id))
            limits.insert(category.id, category.limit);
    }
    // Commands that differ only in case meet under one key; whether they clash is decided
    // pair by pair.
    QMultiHash<QString, qsizetype> changedByKey;
    for (qsizetype i = 0; i < snippets.size(); ++i) {
        if (changed.contains(snippets[i].id))
            changedByKey.insert(CommandCase::folded(snippets[i].command), i);
    }
    if (changedByKey.isEmpty())
        return std::nullopt;
    for (qsizetype j = 0; j < snippets.size(); ++j) {
        const Snippet& other = snippets[j];
        const auto range = changedByKey.equal_range(CommandCase::folded(other.command));
        for (auto it = range.first; it != range.second; ++it) {
            const Snippet& mine = snippets[*it];
            if (*it == j || mine.id == other.id || isBlankCommand(mine.command))
                continue;
            const bool same = mine.command == other.command;
            if (!same && !mine.matchCase && !other.matchCase)
                continue;
            if (limits.value(mine.categoryId).overlaps(limits.value(other.categoryId)))
                return DataError::sameCommandInOverlap(mine.command);
        }
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
                                                      Snippet::Trigger trigger,
                                                      const QSet<QUuid>& waiting, bool matchCase,
                                                      const QUuid& categoryId) const {
    if (isBlankCommand(command))
        return {};
    const Category::Limit limit = limitOf(categoryId);
    const bool anyLimited = anyCategoryLimited();
    const auto apart = [&](const Snippet& other) {
        return anyLimited && !limit.overlaps(limitOf(other.categoryId));
    };
    // Two computers of a synced folder may each have given a snippet the same command: both
    // stay, the one listed first (changed last) expands, until the user changes one.
    if (!snippetId.isNull()) {
        for (const Snippet& other : m_snippets) {
            if (other.command == command && other.id != snippetId && !apart(other))
                return {CommandClash::Kind::sameCommand, {}, command, {}};
        }
    }
    for (const Snippet& other : m_snippets) {
        if (other.id != snippetId && (matchCase || other.matchCase) &&
            CommandCase::differOnlyInCase(other.command, command) && !apart(other))
            return {CommandClash::Kind::differsInCase, {}, other.command, other.id};
    }
    for (const Snippet& other : m_snippets) {
        if (other.id == snippetId || other.command == command || isBlankCommand(other.command))
            continue;
        const Snippet::Trigger otherTrigger =
            waiting.contains(other.id) ? Snippet::Trigger::AfterWordEnd : other.trigger;
        // The categories are looked at last: most snippets are passed over before that.
        if (expandsWhileTyping(other.command, otherTrigger, command) && !apart(other))
            return {CommandClash::Kind::shorterExpands, other.command, command, other.id};
        if (expandsWhileTyping(command, trigger, other.command) && !apart(other))
            return {CommandClash::Kind::shorterExpands, command, other.command, QUuid()};
    }
    return {};
}

std::optional<DataError> SnippetStore::addSnippet(const Snippet& snippet) {
    if (const auto error =
            commandError(snippet.command, snippet.id, snippet.categoryId, snippet.matchCase))
        return error;
    appendSnippet(snippet);
    return saveSnippets();
}

std::optional<DataError> SnippetStore::removeSnippet(const QUuid& id) {
    if (m_snippets.removeIf([&](const Snippet& s) { return s.id == id; }) == 0)
        return std::nullopt;
    ++m_snippetsRevision;
    emit snippetsChanged();
    return saveSnippets();
}

std::optional<DataError> SnippetStore::removeSnippets(const QList<QUuid>& ids) {
    const QSet<QUuid> removing(ids.cbegin(), ids.cend());
    if (m_snippets.removeIf([&](const Snippet& s) { return removing.contains(s.id); }) == 0)
        return std::nullopt;
    ++m_snippetsRevision;
    emit snippetsChanged();
    return saveSnippets();
}

void SnippetStore::setCategories(QList<Category> categories) {
    m_categories = std::move(categories);
    m_categoryIds.clear();
    for (const Category& category : std::as_const(m_categories))
        m_categoryIds.insert(category.id);
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

std::optional<DataError> SnippetStore::addCategory(const QString& name,
                                                   const Category::Limit& limit) {
    if (isDuplicateCategoryName(name, std::nullopt))
        return DataError::duplicateCategoryName();
    QList<Category> categories = m_categories;
    categories.append(Category::create(name));
    categories.last().limit = limit;
    setCategories(std::move(categories));
    return saveCategories();
}

std::optional<DataError> SnippetStore::updateCategory(const Category& category,
                                                      const QString& newName,
                                                      std::optional<Category::Limit> limit) {
    if (isDuplicateCategoryName(newName, category.id))
        return DataError::duplicateCategoryName();
    const auto found = std::find_if(m_categories.cbegin(), m_categories.cend(),
                                    [&](const Category& c) { return c.id == category.id; });
    if (found == m_categories.cend())
        return std::nullopt;
    QList<Category> categories = m_categories;
    Category& renamed = categories[found - m_categories.cbegin()];
    renamed = Category(category.id, newName, category.createdAt);
    renamed.limit = limit.value_or(found->limit);
    if (!(renamed.limit == found->limit)) {
        QSet<QUuid> inCategory;
        for (const Snippet& snippet : std::as_const(m_snippets)) {
            if (snippet.categoryId == category.id)
                inCategory.insert(snippet.id);
        }
        if (const auto error = overlapIn(m_snippets, categories, inCategory))
            return error;
    }
    setCategories(std::move(categories));
    return saveCategories();
}

std::optional<DataError> SnippetStore::moveSnippets(const QList<QUuid>& ids,
                                                    const QUuid& categoryId) {
    const QSet<QUuid> moving(ids.cbegin(), ids.cend());
    QList<Snippet> snippets = m_snippets;
    bool moved = false;
    for (Snippet& snippet : snippets) {
        if (moving.contains(snippet.id) && snippet.categoryId != categoryId) {
            snippet.categoryId = categoryId;
            moved = true;
        }
    }
    if (!moved)
        return std::nullopt;
    if (anyCategoryLimited()) {
        if (const auto error = overlapIn(snippets, m_categories, moving))
            return error;
    }
    setSnippets(std::move(snippets));
    return saveSnippets();
}

std::optional<DataError> SnippetStore::deleteCategory(const Category& category,
                                                      bool keepSnippets) {
    const QUuid id = category.id; // `category` may refer into the list changed below
    if (id == Category::defaultCategoryId)
        return std::nullopt;
    QList<Snippet> snippets = m_snippets;
    if (keepSnippets) {
        for (Snippet& snippet : snippets)
            if (snippet.categoryId == id)
                snippet.categoryId = Category::defaultCategoryId;
    } else {
        snippets.removeIf([&](const Snippet& s) { return s.categoryId == id; });
    }
    setSnippets(std::move(snippets));
    QList<Category> categories = m_categories;
    categories.removeIf([&](const Category& c) { return c.id == id; });
    setCategories(std::move(categories));
    return save(true, true);
}

std::optional<Snippet> SnippetStore::snippet(const QUuid& id) const {
    for (const Snippet& snippet : m_snippets) {
        if (snippet.id == id)
            return snippet;
    }
    return std::nullopt;
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
    ImportMerge merged = ImportMerge::apply(plan, m_categories, m_snippets);
    if (merged.categoriesChanged)
        setCategories(std::move(merged.categories));
    if (merged.snippetsChanged)
        setSnippets(std::move(merged.snippets));
    if (!merged.categoriesChanged && !merged.snippetsChanged)
        return std::nullopt;
    // One save of what changed; the history keeps the library as it was before the import.
    return save(merged.snippetsChanged, merged.categoriesChanged, LibraryHistory::Reason::Import);
}

std::optional<DataError> SnippetStore::updateSnippet(const Snippet& snippet,
                                                             const QString& command,
                                                             const QString& content,
                                                             std::optional<QUuid> categoryId,
                                                             std::optional<Snippet::Trigger> trigger,
                                                             std::optional<bool> matchCase) {
    const auto found = std::find_if(m_snippets.cbegin(), m_snippets.cend(),
                                    [&](const Snippet& s) { return s.id == snippet.id; });
    const bool keptMatchCase = found != m_snippets.cend() ? found->matchCase : snippet.matchCase;
    if (const auto error = commandError(command, snippet.id,
                                        categoryId.value_or(snippet.categoryId),
                                        matchCase.value_or(keptMatchCase)))
        return error;
    if (found == m_snippets.cend())
        return std::nullopt;
    const qsizetype index = found - m_snippets.cbegin();
    const Snippet::Trigger keptTrigger = m_snippets[index].trigger;
    m_snippets[index] = Snippet(snippet.id, command, content, snippet.createdAt,
                                  categoryId.value_or(snippet.categoryId));
    m_snippets[index].trigger = trigger.value_or(keptTrigger);
    m_snippets[index].matchCase = matchCase.value_or(keptMatchCase);
    ++m_snippetsRevision;
    emit snippetsChanged();
    return saveSnippets();
}

std::optional<DataError> SnippetStore::save(bool snippets, bool categories,
                                            LibraryHistory::Reason reason) {
    QMap<QString, QVariant> changes;
    if (snippets) {
        const auto data = m_snippetEncoder.encode(m_snippets);
        if (data) {
            changes.insert(QLatin1String(snippetsKey), *data);
            // In the same write as the list, so the two never disagree on disk.
            changes.insert(QLatin1String(afterWordEndKey),
                           QJsonDocument(RecordCodec::afterWordEndIds(m_snippets))
                               .toJson(QJsonDocument::Compact));
        }
        // Observers run after the action that saved has finished; the list they get is the one
        // current at delivery.
        QMetaObject::invokeMethod(
            this, [this] { emit snippetsSaved(m_snippets); }, Qt::QueuedConnection);
    }
    if (categories) {
        if (const auto data = RecordCodec::encodeCategories(m_categories))
            changes.insert(QLatin1String(categoriesKey), *data);
    }
    if (changes.isEmpty())
        return std::nullopt;
    if (m_damagedUnkept) {
        keepDamagedFile();
        if (m_damagedUnkept) {
            const DataError error = DataError::damagedRecordsUnkept(settingsPath());
            emit saveFailed(error);
            return error;
        }
    }
    if (auto why = m_file->write(changes, reason))
        return DataError::notSaved(std::move(*why));
    return std::nullopt;
}

std::optional<DataError> SnippetStore::saveSnippets() { return save(true, false); }

std::optional<DataError> SnippetStore::saveCategories() { return save(false, true); }

void SnippetStore::saveOverDamagedRecords() {
    m_damagedUnkept = false;
    save(true, true);
}

std::optional<DataError> SnippetStore::replaceLibrary(QList<Category> categories,
                                                     QList<Snippet> snippets) {
    setCategories(std::move(categories));
    setSnippets(std::move(snippets));
    return save(true, true);
}

std::optional<DataError> SnippetStore::restoreVersion(const QString& versionPath) {
    std::optional<DataError> error;
    auto version = LibraryContent::read(versionPath, &error);
    if (!version)
        return error;
    setCategories(std::move(*version->categories));
    setSnippets(std::move(*version->snippets));
    const bool hadDefault = category(Category::defaultCategoryId).has_value();
    if (!hadDefault) {
        QList<Category> withDefault = m_categories;
        withDefault.append(defaultCategory());
        setCategories(std::move(withDefault));
    }
    return save(true, true, LibraryHistory::Reason::Restore);
}

void SnippetStore::loadSnippets() {
    const QVariant value = m_file->value(QLatin1String(snippetsKey));
    if (!value.isValid()) {
        if (!m_snippets.isEmpty())
            setSnippets({});
        return;
    }
    int unreadable = 0;
    auto snippets = value.typeId() == QMetaType::QByteArray
                        ? LibraryContent::decodeSnippets(
                              value.toByteArray(),
                              m_file->value(QLatin1String(afterWordEndKey)).toByteArray(),
                              &unreadable)
                        : std::nullopt;
    if (!snippets || unreadable > 0)
        noteUnreadable(QLatin1String(snippetsKey), snippets ? unreadable : -1);
    if (snippets)
        setSnippets(std::move(*snippets));
}

void SnippetStore::loadCategories() {
    const QVariant value = m_file->value(QLatin1String(categoriesKey));
    if (!value.isValid()) {
        if (!m_categories.isEmpty())
            setCategories({});
        return;
    }
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
    // The next save rewrites the file: first keep it as it is, once, in the history.
    if (m_backupPath.isEmpty())
        keepDamagedFile();
    qCWarning(lcStore).noquote() << QStringLiteral("In %1 %2; the file as it was is kept in %3")
                                        .arg(settingsPath(), what,
                                             m_backupPath.isEmpty() ? QStringLiteral("(no copy could be made)")
                                                                    : m_backupPath);
}

void SnippetStore::keepDamagedFile() {
    QString kept;
    m_damagedUnkept = m_file->keepOnDisk(LibraryHistory::Reason::Salvage, &kept).has_value();
    if (!m_damagedUnkept)
        m_backupPath = kept;
}
