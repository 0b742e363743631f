#include "ShortcutDataManager.h"

#include "Logging.h"
#include "RecordCodec.h"
#include "SettingsFile.h"

#include <QDateTime>
#include <QFile>
#include <QSettings>
#include <QVariant>


ShortcutDataManager::ShortcutDataManager(const QString& settingsFile, QObject* parent)
    : QObject(parent),
      m_settings(SettingsFile::open(settingsFile)) {
    loadCategories();
    loadShortcuts();
    for (const CategoryRef& category : std::as_const(m_categories)) {
        if (category->id() == Category::defaultCategoryId)
            return;
    }
    QList<CategoryRef> categories = m_categories;
    categories.append(defaultCategory());
    setCategories(std::move(categories));
    saveCategories();
}

ShortcutDataManager::~ShortcutDataManager() = default;

QString ShortcutDataManager::settingsPath() const { return m_settings->fileName(); }

void ShortcutDataManager::setShortcuts(QList<Shortcut> shortcuts) {
    m_shortcuts = std::move(shortcuts);
    ++m_shortcutsRevision;
    emit shortcutsChanged();
}

bool ShortcutDataManager::isBlankCommand(const QString& command) {
    return command.trimmed().isEmpty();
}

void ShortcutDataManager::appendShortcut(const Shortcut& shortcut) {
    if (isBlankCommand(shortcut.command)) {
        qCWarning(lcStore).noquote() << QStringLiteral("Refused a snippet with a blank command");
        return;
    }
    m_shortcuts.append(shortcut);
    ++m_shortcutsRevision;
    emit shortcutsChanged();
}

std::optional<DataError> ShortcutDataManager::commandError(const QString& command,
                                                           const QUuid& shortcutId) const {
    if (isBlankCommand(command))
        return DataError::blankCommand();
    for (const Shortcut& other : m_shortcuts) {
        if (other.command == command && other.id != shortcutId)
            return DataError::duplicateCommand();
    }
    return std::nullopt;
}

std::optional<DataError> ShortcutDataManager::addShortcut(const Shortcut& shortcut) {
    if (const auto error = commandError(shortcut.command, shortcut.id))
        return error;
    appendShortcut(shortcut);
    return saved(saveShortcuts());
}

std::optional<DataError> ShortcutDataManager::removeShortcut(const QUuid& id) {
    if (m_shortcuts.removeIf([&](const Shortcut& s) { return s.id == id; }) == 0)
        return std::nullopt;
    ++m_shortcutsRevision;
    emit shortcutsChanged();
    return saved(saveShortcuts());
}

std::optional<DataError> ShortcutDataManager::saved(const std::optional<QString>& saveError) {
    return saveError ? std::optional(DataError::notSaved(*saveError)) : std::nullopt;
}

void ShortcutDataManager::setCategories(QList<CategoryRef> categories) {
    m_categories = std::move(categories);
    emit categoriesChanged();
}

CategoryRef ShortcutDataManager::category(const QUuid& id) const {
    for (const CategoryRef& category : m_categories) {
        if (category->id() == id)
            return category;
    }
    return {};
}

bool ShortcutDataManager::isDuplicateCategoryName(const QString& name,
                                                  std::optional<QUuid> excluding) const {
    // Full Unicode lower-casing, no trimming: "Work" clashes with "work", not with " Work".
    const QString candidate = name.toLower();
    for (const CategoryRef& category : m_categories) {
        if (excluding && category->id() == *excluding)
            continue;
        if (category->name().toLower() == candidate)
            return true;
    }
    return false;
}

std::optional<DataError> ShortcutDataManager::addCategory(const QString& name) {
    if (isDuplicateCategoryName(name, std::nullopt))
        return DataError::duplicateCategoryName();
    QList<CategoryRef> categories = m_categories;
    categories.append(Category::create(name));
    setCategories(std::move(categories));
    return saved(saveCategories());
}

std::optional<DataError> ShortcutDataManager::updateCategory(const Category& category,
                                                             const QString& newName) {
    if (isDuplicateCategoryName(newName, category.id()))
        return DataError::duplicateCategoryName();
    const auto found = std::find_if(m_categories.cbegin(), m_categories.cend(),
                                    [&](const CategoryRef& c) { return c->id() == category.id(); });
    if (found == m_categories.cend())
        return std::nullopt;
    // A new object rather than a rename in place: holders of the old object keep what they had.
    QList<CategoryRef> categories = m_categories;
    categories[found - m_categories.cbegin()] =
        CategoryRef::create(category.id(), newName, category.createdAt());
    setCategories(std::move(categories));
    return saved(saveCategories());
}

std::optional<DataError> ShortcutDataManager::deleteCategory(const Category& category) {
    const QUuid id = category.id(); // `category` may be one of the objects removed below
    if (id == Category::defaultCategoryId)
        return std::nullopt;
    QList<Shortcut> shortcuts = m_shortcuts;
    shortcuts.removeIf([&](const Shortcut& s) { return s.categoryId == id; });
    setShortcuts(std::move(shortcuts));
    QList<CategoryRef> categories = m_categories;
    categories.removeIf([&](const CategoryRef& c) { return c->id() == id; });
    setCategories(std::move(categories));
    // One write carries both lists when the first fails (see write()).
    const std::optional<QString> categoriesError = saveCategories();
    const std::optional<QString> shortcutsError = saveShortcuts();
    return saved(shortcutsError ? shortcutsError : categoriesError);
}

std::optional<DataError> ShortcutDataManager::updateShortcut(const Shortcut& shortcut,
                                                             const QString& command,
                                                             const QString& content,
                                                             std::optional<QUuid> categoryId) {
    if (const auto error = commandError(command, shortcut.id))
        return error;
    const auto found = std::find_if(m_shortcuts.cbegin(), m_shortcuts.cend(),
                                    [&](const Shortcut& s) { return s.id == shortcut.id; });
    if (found == m_shortcuts.cend())
        return std::nullopt;
    const qsizetype index = found - m_shortcuts.cbegin();
    m_shortcuts[index] = Shortcut(shortcut.id, command, content, shortcut.createdAt,
                                  categoryId.value_or(shortcut.categoryId));
    ++m_shortcutsRevision;
    emit shortcutsChanged();
    return saved(saveShortcuts());
}

std::optional<QString> ShortcutDataManager::write(const char* key, const QByteArray& data) {
    // A list whose last save failed goes out again with this one.
    m_unsaved.insert(QLatin1String(key), data);
    const std::optional<QString> error = SettingsFile::save(*m_settings, m_unsaved);
    if (!error) {
        m_unsaved.clear();
        return std::nullopt;
    }
    const QString message = QStringLiteral("Could not save %1 to %2: %3")
                                .arg(QStringList(m_unsaved.keys()).join(QStringLiteral(" and ")),
                                     settingsPath(), *error);
    qCWarning(lcStore).noquote() << message;
    emit saveFailed(message);
    return message;
}

std::optional<QString> ShortcutDataManager::saveShortcuts() {
    const auto data = m_shortcutEncoder.encode(m_shortcuts);
    if (!data)
        return std::nullopt;
    std::optional<QString> error = write(shortcutsKey, *data);
    // Observers run after the action that saved has finished; the list they get is the one
    // current at delivery.
    QMetaObject::invokeMethod(
        this, [this] { emit shortcutsSaved(m_shortcuts); }, Qt::QueuedConnection);
    return error;
}

std::optional<QString> ShortcutDataManager::saveCategories() {
    const auto data = RecordCodec::encodeCategories(m_categories);
    if (!data)
        return std::nullopt;
    return write(categoriesKey, *data);
}

void ShortcutDataManager::loadShortcuts() {
    const QVariant value = m_settings->value(QLatin1String(shortcutsKey));
    if (!value.isValid())
        return;
    int unreadable = 0;
    auto shortcuts = value.typeId() == QMetaType::QByteArray
                         ? RecordCodec::decodeShortcuts(value.toByteArray(), &unreadable)
                         : std::nullopt;
    if (!shortcuts || unreadable > 0)
        noteUnreadable(QLatin1String(shortcutsKey), shortcuts ? unreadable : -1);
    if (shortcuts)
        setShortcuts(std::move(*shortcuts));
}

void ShortcutDataManager::loadCategories() {
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

void ShortcutDataManager::noteUnreadable(const QString& key, int records) {
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
