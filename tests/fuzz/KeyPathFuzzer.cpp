// The key path as a program: each input is a run of keys, BackSpaces, caret keys, clicks, focus
// changes, pauses, snippet edits and finished outputs played against a matching engine over
// the real store. After every step the engine must agree with a model of what was typed: the
// buffer is the typed text since the last caret move, it expands exactly when the plain
// matching rule says so, it never erases more than was typed since the caret last moved nor
// expands on a blank command, and a BackSpace undoes an expansion only right after it, in the
// window it went to.
#include "GraphemeText.h"
#include "KeyTranslator.h"
#include "RecordingKeyboardOutput.h"
#include "ReferenceMatcher.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"
#include "TextExpander.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace {
void require(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "broken invariant: %s\n", what);
    std::abort();
}

// Key texts and command characters: letters that compose, marks, joiners, spaces that are blank,
// characters outside the BMP, lone surrogates, and keys the engine ignores or resets on.
const char16_t* const kKeys[] = {
    u"a", u"b", u";", u" ", u"e", u"\u0301", u"\u00E9", u"\t", u"\u00A0", u"\U0001F600",
    u"\U0001F1FA", u"\U0001F1F8", u"\u200D", u"\u05D0", u"\u1100", u"\u1161", u"\uAC00",
    u"\u0915\u094D", u"1", u"\u2003", u"\uFE0F", u"\n", u"$", u"\x18", u"\xD83D", u"\xDE00", u""};

class Reader {
public:
    Reader(const uint8_t* data, size_t size) : m_data(data), m_left(size) {}
    bool done() const { return m_left == 0; }
    uint8_t next() { return m_left ? (--m_left, *m_data++) : 0; }
    QString key() { return QString::fromUtf16(kKeys[next() % std::size(kKeys)]); }
    QString text(int length) {
        QString text;
        while (length-- > 0)
            text += key();
        return text;
    }

private:
    const uint8_t* m_data;
    size_t m_left;
};

// Warnings (refused commands, left-out control characters) are expected; only a fatal message,
// which aborts, matters.
void quiet(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

// Lives across inputs: building an application and a store per input would dominate the run.
struct Fixture {
    int argc = 1;
    char name[16] = "key_path_fuzzer";
    char* argv[2] = {name, nullptr};
    QCoreApplication app{argc, argv};
    TemporarySettings settings;
    SnippetStore store{settings.path()};
};

// One input's engine and output, on a clock the program moves.
struct Session {
    RecordingKeyboardOutput output;
    double now = 1000;
    double lastKey = now;
    qsizetype typedUnits = 0; // accepted text since the last reset, in UTF-16 units
    // The command of the expansion whose output finished last, while nothing else has come
    // since (no key, click or focus change): only then may a BackSpace put it back.
    std::optional<QString> undoable;
    double finishedAt = 0;
    std::optional<QString> expanding; // the command whose content is going out
    TextExpander engine;

    explicit Session(SnippetStore& store) : engine(store, &output, [this] { return now; }) {
        output.finishAtOnce = false;
    }
};

void key(Session& s, const QList<Snippet>& snippets, const QString& text) {
    const QString before = s.engine.buffer();
    const bool wasExpanding = s.engine.isExpanding();
    const qsizetype performed = s.output.performed.size();
    // Any key, even one that is ignored, restarts the pause.
    const bool paused = s.now - s.lastKey > TextExpander::bufferTimeout;
    s.lastKey = s.now;
    if (paused)
        s.typedUnits = 0;
    const QString base = paused ? QString() : before;

    const std::optional<QString> undoable = std::exchange(s.undoable, std::nullopt);
    s.engine.handleKeyPress(text);
    const QString after = s.engine.buffer();
    require(s.output.performed.size() - performed <= 1, "one key starts at most one expansion");
    if (text == QChar(0x08) && s.output.performed.size() > performed) {
        // Erasing the content again is safe only right where it was typed, and soon.
        require(undoable && !wasExpanding && s.now - s.finishedAt <= TextExpander::bufferTimeout,
                "a BackSpace undoes only the expansion that finished just before it");
        require(after == *undoable, "an undo puts the command back before the caret");
        s.expanding.reset(); // putting the command back is not undone in turn
        s.typedUnits = after.size();
        return;
    }

    const bool movesTheCaret =
        text.size() == 1 && (QStringView(u"\t\r\n\x7f\x1c\x1d\x1e\x1f").contains(text.front()) ||
                             text.front() == KeyTranslator::caretKeyText ||
                             text.front() == KeyTranslator::chordText);
    if (text == QChar(0x08)) {
        require(base.startsWith(after) && (after.size() < base.size() || base.isEmpty()),
                "BackSpace takes the last character off the buffer");
    } else if (movesTheCaret) {
        // Nothing typed before the caret moved may be erased from now on.
        require(after.isEmpty(), "a key that moves the caret or edits elsewhere clears the buffer");
        s.typedUnits = 0;
    } else if (!TextExpander::isAccepted(text)) {
        require(after == base, "an ignored key leaves the buffer alone");
    } else {
        const QString typed = base + text;
        s.typedUnits += text.size();
        const auto match = ReferenceMatcher::match(snippets, typed);
        if (s.output.performed.size() > performed) {
            const Expansion& e = s.output.performed.last();
            require(e.size() == 2 && e[0].kind == ExpansionAction::Kind::Erase &&
                        e[1].kind == ExpansionAction::Kind::Type,
                    "an expansion erases, then types");
            const int erased = e[0].count;
            require(erased >= 1 && erased <= s.typedUnits, "erases only what was typed since the reset");
            const QStringList clusters = GraphemeText::clusters(typed);
            require(erased <= clusters.size(), "erases no more characters than the buffer holds");
            require(!SnippetStore::isBlankCommand(clusters.mid(clusters.size() - erased).join(QString())),
                    "never expands on a blank command");
        }
        if (match && !wasExpanding) {
            const Snippet& hit = snippets[*match];
            int leftOut = 0;
            require(s.output.performed.size() > performed &&
                        s.output.performed.last() ==
                            TextExpander::replacement(int(GraphemeText::count(hit.command)),
                                                      TextExpander::typeableText(hit.content, leftOut)),
                    "expands the snippet the plain rule picks, with its command's length");
            require(after.isEmpty() && s.engine.isExpanding(), "an expansion starts from an empty buffer");
            s.expanding = hit.command;
        } else {
            require(s.output.performed.size() == performed, "no expansion without a match, or while one runs");
            // A match while the last expansion is still typed cannot be placed: the buffer starts over.
            require(after == (match ? QString() : typed), "the buffer is the typed text");
        }
        if (match)
            s.typedUnits = 0;
    }
    require(after.size() <= s.typedUnits, "the buffer holds no more than was typed since the reset");
}

void edit(SnippetStore& store, Reader& in) {
    const uint8_t how = in.next();
    const QList<Snippet> old = store.snippets();
    if (how % 3 == 0 || old.isEmpty()) {
        const QString command = in.text(1 + how / 3 % 4); // read in order, command first
        const Snippet added = Snippet::create(command, in.text(how / 12 % 4), Category::defaultCategoryId);
        const bool blank = SnippetStore::isBlankCommand(added.command);
        if (how & 0x80) { // as a list read from a file arrives: blank commands and all
            store.setSnippets(QList<Snippet>(old) << added);
        } else {
            store.appendSnippet(added);
            require(store.snippets().size() == old.size() + (blank ? 0 : 1), "blank commands are refused");
        }
        return;
    }
    const Snippet target = old[in.next() % old.size()];
    if (how % 3 == 1) {
        require(!store.removeSnippet(target.id), "the removal is saved");
        require(store.snippets().size() == old.size() - 1, "the snippet is removed");
        return;
    }
    const QString command = in.text(1 + how / 3 % 4);
    const bool refused = SnippetStore::isBlankCommand(command) ||
                         std::any_of(old.cbegin(), old.cend(), [&](const Snippet& other) {
                             return other.command == command && other.id != target.id;
                         });
    const std::optional<DataError> error = store.updateSnippet(target, command, target.content);
    const auto found = std::find(store.snippets().cbegin(), store.snippets().cend(), target);
    require(found != store.snippets().cend(), "a changed snippet stays in the list");
    require(refused ? error && found->command == target.command : found->command == command,
            "a command changes unless it is blank or another snippet's");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const QtMessageHandler previous = qInstallMessageHandler(quiet);
    (void)previous;
    static Fixture fixture;
    SnippetStore& store = fixture.store;
    store.setSnippets({});

    Reader in(data, size);
    {
        Session session(store);
        while (!in.done()) {
            switch (in.next() % 11) {
            case 4: {
                const uint8_t low = in.next();
                key(session, store.snippets(), QChar(char16_t(low | in.next() << 8)));
                break;
            }
            case 5: {
                // BackSpace, or a key that moves the caret (Delete, an arrow, Home, Tab, Return).
                static constexpr char16_t keys[] = {0x08, 0x7F, 0x1C, 0x1E, KeyTranslator::caretKeyText,
                                                    u'\t', u'\r'};
                key(session, store.snippets(), QChar(keys[in.next() % std::size(keys)]));
                break;
            }
            case 6: session.now += (in.next() % 16) * 0.25; break;
            case 7:
            case 8: edit(store, in); break;
            case 9: {
                const bool wasExpanding = session.engine.isExpanding();
                session.output.finish();
                require(!session.engine.isExpanding(), "a finished output ends the expansion");
                if (wasExpanding) {
                    session.undoable = std::exchange(session.expanding, std::nullopt);
                    session.finishedAt = session.now;
                }
                break;
            }
            case 10: {
                // A click or another window: the caret may be anywhere now.
                if (in.next() % 2)
                    session.engine.focusChanged();
                else
                    session.engine.pointerPressed();
                require(session.engine.buffer().isEmpty(), "a click or a focus change clears the buffer");
                session.typedUnits = 0;
                session.undoable.reset();
                break;
            }
            default: key(session, store.snippets(), in.key()); break;
            }
        }
    }
    // Save notices are queued; deliver them so they do not pile up across inputs.
    QCoreApplication::sendPostedEvents();
    return 0;
}
