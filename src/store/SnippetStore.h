#pragma once

#include "Category.h"
#include "DataError.h"
#include "ImportPlan.h"
#include "LibraryFile.h"
#include "LibraryKeys.h"
#include "Snippet.h"
#include "SnippetListEncoder.h"

#include <QList>
#include <QMap>
#include <QSet>
#include <QVariant>
#include <QObject>
#include <memory>
#include <optional>

// The single owner of the snippet and category lists. Loads both from the library file when
// created, guarantees the default category, validates category names, writes a list back after
// every change and announces every snippet save with snippetsSaved(). When another program
// changes the lists in the file, the store takes the merged lists in and announces them as any
// other change.
//
// Lists keep their stored order and are scanned from the front: the record with a given id is
// always the first one with that id.
class SnippetStore : public QObject {
    Q_OBJECT
public:
    // A store over the library file that main() owns. Loads at once.
    explicit SnippetStore(LibraryFile& file, QObject* parent = nullptr);
    // A store with a library file of its own, over the given path (tests use their own); an
    // empty path means the user's standard $XDG_CONFIG_HOME/Typolet/Typolet.conf.
    explicit SnippetStore(const QString& settingsFile = {}, QObject* parent = nullptr);
    ~SnippetStore() override;

    const QList<Snippet>& snippets() const { return m_snippets; }
    const QList<Category>& categories() const { return m_categories; }

    // Bumped on every change to snippets(), so derived indexes know when to rebuild.
    quint64 snippetsRevision() const { return m_snippetsRevision; }

    // The changes the windows make. Each checks the change, makes it, saves, and returns why
    // it was refused (nothing changed) or could not be saved (the change stays in memory and
    // goes out with the next save). A command must not be blank (it would expand on every key)
    // nor another snippet's; a category name must not be another category's, ignoring case.
    [[nodiscard]] std::optional<DataError> addSnippet(const Snippet& snippet);
    //
    // The same command may be in two categories whose applications do not overlap (one only
    // in the terminal, the other only in the mail program); a snippet that matches the
    // command's case also clashes with commands that differ from its own only in case.
    [[nodiscard]] std::optional<DataError> updateSnippet(const Snippet& snippet,
                                                          const QString& command,
                                                          const QString& content,
                                                          std::optional<QUuid> categoryId = std::nullopt,
                                                          std::optional<Snippet::Trigger> trigger = std::nullopt,
                                                          std::optional<bool> matchCase = std::nullopt);
    // Every snippet with that id.
    [[nodiscard]] std::optional<DataError> removeSnippet(const QUuid& id);
    // Every snippet with one of these ids, as one change saved once.
    [[nodiscard]] std::optional<DataError> removeSnippets(const QList<QUuid>& ids);
    [[nodiscard]] std::optional<DataError> addCategory(const QString& name,
                                                       const Category::Limit& limit = {});
    // A new name and, when given, a new limit to applications; a limit that would let two
    // snippets with one command expand in the same application is refused.
    [[nodiscard]] std::optional<DataError> updateCategory(const Category& category,
                                                          const QString& newName,
                                                          std::optional<Category::Limit> limit = std::nullopt);
    // The category and its snippets; the default category stays. With `keepSnippets` its
    // snippets move to the default category instead, in the same save.
    [[nodiscard]] std::optional<DataError> deleteCategory(const Category& category,
                                                          bool keepSnippets = false);
    // Puts the snippets with these ids in the category, as one change saved once.
    [[nodiscard]] std::optional<DataError> moveSnippets(const QList<QUuid>& ids,
                                                        const QUuid& categoryId);
    // Everything `plan` adds, as one change saved once. The plan's categories are matched to
    // existing ones by name, ignoring case, and created when missing (unless every candidate
    // of theirs is skipped); a candidate whose category is neither in the plan nor in the
    // store goes to the default category. A candidate whose command is already a snippet's
    // is resolved as the plan says: skipped, kept both, or put in place of the existing
    // snippet's content (its id, creation time, category and trigger stay). Ids already in use are
    // replaced by fresh ones. A plan that failed to read is refused.
    [[nodiscard]] std::optional<DataError> importSnippets(const ImportPlan& plan);
    // Puts a version from the history in place of both lists, as one change; the library as it
    // is now is kept in the history first.
    [[nodiscard]] std::optional<DataError> restoreVersion(const QString& versionPath);

    // Both lists at once, as another computer's library merged with this one gives them, saved
    // once. Nothing is checked: each record was checked where it was made, and a command two
    // computers each gave a snippet stays twice until the user changes one.
    [[nodiscard]] std::optional<DataError> replaceLibrary(QList<Category> categories,
                                                          QList<Snippet> snippets);

    // Direct changes to the snippet list for loading many at once (and for tests); they are
    // not saved until saveSnippets(). Appending a snippet with a blank command is refused.
    void setSnippets(QList<Snippet> snippets);
    void appendSnippet(const Snippet& snippet);

    // Write a list; return why it could not be saved (also announced with saveFailed()).
    std::optional<DataError> saveSnippets();
    std::optional<DataError> saveCategories();

    // While records that could not be read have no copy anywhere (no room for one in the
    // history), nothing is saved over them; the user may choose to save all the same.
    bool damagedRecordsUnkept() const { return m_damagedUnkept; }
    void saveOverDamagedRecords();

    // Why `command` and another snippet's command cannot both be typed: a command that shows
    // up inside another, short of its end, expands while the longer one is typed (";sig" inside
    // ";signature"), unless it waits for a word to end and the longer one goes on with a
    // letter there. A warning, not a refusal; the cure is to let the shorter one wait. For an
    // existing snippet, also another snippet with the very same command (from a synced folder);
    // there is no shorter command then.
    struct CommandClash {
        enum class Kind {
            none,
            sameCommand,     // another snippet has the very same command
            shorterExpands,  // `shorterCommand` expands while `longerCommand` is typed
            differsInCase,   // `longerCommand` (another's) differs only in letter case, and one
                             // of the two matches the command's case: the store refuses it
        };
        Kind kind = Kind::none;
        QString shorterCommand;
        QString longerCommand;
        QUuid shorterId; // null when the shorter one is `command` itself
        explicit operator bool() const { return kind != Kind::none; }
    };
    // Snippets in `waiting` count as waiting for a word end (a cure chosen but not yet made).
    // Snippets of a category whose applications do not overlap those of `categoryId` never
    // clash with it.
    CommandClash commandClash(const QString& command, const QUuid& snippetId,
                              Snippet::Trigger trigger = Snippet::Trigger::Immediately,
                              const QSet<QUuid>& waiting = {}, bool matchCase = false,
                              const QUuid& categoryId = Category::defaultCategoryId) const;
    // The applications where the snippets of this category expand (no limit for a category
    // that is not in the list).
    Category::Limit limitOf(const QUuid& categoryId) const;
    // Whether any category is limited to applications.
    bool anyCategoryLimited() const;

    // Only blanks, or nothing: never a command.
    static bool isBlankCommand(const QString& command);
    void loadSnippets();
    void loadCategories();

    static Category defaultCategory() { return Category::defaultCategory(); }

    // The first category with this id.
    std::optional<Category> category(const QUuid& id) const;
    // The category a snippet is shown in: its own, or the default one when its own is not in
    // the list (a category record that could not be read), so that no snippet is hidden.
    QUuid shownCategoryId(const Snippet& snippet) const {
        return m_categoryIds.contains(snippet.categoryId) ? snippet.categoryId
                                                          : Category::defaultCategoryId;
    }
    // The first snippet with this id.
    std::optional<Snippet> snippet(const QUuid& id) const;
    // The first snippet with this command.
    std::optional<Snippet> snippetWithCommand(const QString& command) const;

    // Where the lists are kept on disk.
    QString settingsPath() const;

    // Records in the file that could not be read when it was loaded (a list that could not be
    // read at all counts as one), and the copy of the file as it was before anything rewrote it.
    int unreadableRecords() const { return m_unreadableRecords; }
    QString backupPath() const { return m_backupPath; }
    // Why the library file could not be read at all; empty when it could.
    QString loadError() const { return m_file->readError(); }
    LibraryFile& file() { return *m_file; }

    static constexpr const char* snippetsKey = LibraryKeys::snippets;
    static constexpr const char* categoriesKey = LibraryKeys::categories;
    static constexpr const char* afterWordEndKey = LibraryKeys::afterWordEnd;

signals:
    void snippetsChanged();
    void categoriesChanged();
    // A write reached no disk; the in-memory lists keep the change.
    void saveFailed(const DataError& error);
    // Every change is on disk (after a save that failed before, the problem is over).
    void allSaved();
    // After each snippet save, once the action that saved has finished; carries the list
    // current at delivery.
    void snippetsSaved(const QList<Snippet>& snippets);

private:
    std::optional<DataError> commandError(const QString& command, const QUuid& snippetId,
                                          const QUuid& categoryId, bool matchCase) const;
    // The first pair of snippets in `snippets`, one of them in `changed`, that would expand
    // for the same keys in one application with categories as in `categories`.
    static std::optional<DataError> overlapIn(const QList<Snippet>& snippets,
                                              const QList<Category>& categories,
                                              const QSet<QUuid>& changed);
    bool isDuplicateCategoryName(const QString& name, std::optional<QUuid> excluding) const;
    void setCategories(QList<Category> categories);
    void ensureDefaultCategory();
    std::optional<DataError> save(bool snippets, bool categories,
                                  LibraryHistory::Reason reason = LibraryHistory::Reason::Edit);
    void noteUnreadable(const QString& key, int records);
    void keepDamagedFile();
    void takeOutsideChanges(const QStringList& keys);

    std::unique_ptr<LibraryFile> m_ownFile;
    LibraryFile* m_file;
    int m_unreadableRecords = 0;
    QString m_backupPath;
    bool m_damagedUnkept = false;
    QList<Snippet> m_snippets;
    QList<Category> m_categories;
    QSet<QUuid> m_categoryIds;
    quint64 m_snippetsRevision = 0;
    SnippetListEncoder m_snippetEncoder;
};
