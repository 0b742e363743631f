#pragma once

#include "EnginePlatform.h"
#include "EngineSettings.h"
#include "ExpansionAction.h"
#include "FormValueSource.h"
#include "ExpansionLifecycle.h"
#include "KeyStroke.h"
#include "KeystrokeBuffer.h"
#include "TriggerIndex.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <optional>

class ClipboardSource;
class FormValueSource;
class KeyHold;
class KeyboardOutput;
struct Snippet;
class SnippetStore;

// The expansion engine's core: keeps what the user has just typed right before the caret (a
// key that moves the caret, a click, another window or a key read late empties it) and, after
// every accepted character, looks for a snippet whose command the typed text ends with. On a
// match it holds the user's keys, has the output erase the command and type the snippet's
// content, then lets the held keys go; they reach the application after the content and come
// back, one per turn of the event loop, as ordinary keys. The life of one expansion is an
// ExpansionLifecycle (docs/engine.md): the engine decides what happened, it keeps the phase.
//
// The engine keeps no copy of the snippets: every check reads the store's current list (through
// an index that is rebuilt whenever that list has changed), so an edit takes effect at the next
// keystroke.
class TextExpander : public QObject {
    Q_OBJECT
public:
    // Wall-clock seconds; injectable so the 3-second timeout can be tested without waiting.
    using Clock = std::function<double()>;

    static constexpr double bufferTimeout = 3.0;

    // An engine that only matches: keys come in through handleKeyPress.
    TextExpander(SnippetStore& store, KeyboardOutput* output, Clock clock = {},
                 QObject* parent = nullptr);
    // A listening engine: checks the permissions and starts the key monitor.
    TextExpander(SnippetStore& store, const EnginePlatform& platform, Clock clock = {},
                 QObject* parent = nullptr);
    ~TextExpander() override;

    // Asked at every key: while it answers true, typed keys are not looked at. In Typolet's
    // own windows a command is text for a field, never something to expand.
    void setKeysIgnoredWhen(std::function<bool()> ignored) { m_keysIgnored = std::move(ignored); }
    // The user's "Pause Expansion": likewise nothing is looked at until it is switched off.
    void setPaused(bool paused);
    // Applications (by the platform's focus name, letter case ignored) where nothing expands.
    // The focus is asked at each key only while there are any.
    void setExcludedApplications(const QStringList& names) { m_excluded = names; }

    // BackSpace as the first key after an expansion (within the buffer's timeout, with the
    // focus still in the window the content went to) puts the command back as it was typed.
    // On by default.
    void setUndoWithBackspace(bool enabled) { m_undoEnabled = enabled; }

    // Where a content's {{clipboard}} reads the clipboard's text; without one it gives nothing.
    void setClipboard(ClipboardSource* clipboard) { m_clipboard = clipboard; }
    // Where a content's form fields ({{field:Name}}, ...) get their values. Without one they
    // type their defaults, as the content is typed at once.
    void setFormValues(FormValueSource* source) { m_formValues = source; }
    // Contents of at least `characters` characters are pasted through the clipboard instead of
    // typed, which is far quicker for long ones; 0 (the default) types every content.
    void setPasteThreshold(int characters) { m_pasteThreshold = characters; }

    // The user's settings, all at once (the keyboard layout is the backend's to apply).
    void apply(const EngineSettings& settings);

    // Whether startMonitoring() got the key monitor running.
    bool isMonitoring() const { return m_monitoring; }
    // Between a match and the end of its output.
    bool isExpanding() const { return m_life.expanding(); }
    ExpansionLifecycle::Phase phase() const { return m_life.phase(); }

    // Sends `snippet`'s content to the focused window as an expansion does (placeholders
    // filled, {{cursor}} honoured, pasted when long), erasing nothing: no command was typed
    // (the insert window). Nothing goes out while another expansion is under way.
    void insert(const Snippet& snippet);

    // One key-down seen by the monitor: translated with its state and handed to handleKeyPress.
    void keyDown(const KeyStroke& stroke);

    // One translated key-down: empty (a dead key's first press) or the key's text. A match is
    // looked for at once, so a command expands however quickly the next key follows it.
    void handleKeyPress(const QString& character);

    QString buffer() const { return m_buffer.text(); }
    double lastKeyDownTime() const { return m_lastKeyDownTime; }

    // The content without control characters other than tabs and line breaks; counts the
    // characters left out.
    static QString typeableText(const QString& content, int& leftOut);

    // The steps that replace `erased` typed characters with `text` followed by `retyped` (keys
    // that reached the application before the expansion began). `text` is pasted when it has at
    // least `pasteThreshold` characters and the threshold is above 0; `retyped` is always typed.
    static Expansion replacement(int erased, const QString& text, const QString& retyped = {},
                                 int pasteThreshold = 0);

    // White space (Zs), letters, marks, numbers and punctuation; symbols and control
    // characters are ignored (a Tab may leave the field: it empties the buffer instead).
    static bool isAccepted(QStringView character);

    // Told by the key monitor; public so that an engine that only matches can be told too.
    // A click may have moved the caret: nothing typed before it may be erased.
    void pointerPressed();
    // Another window may have the focus: what was typed, an undo and a waiting command belong
    // to the window they were typed in.
    void focusChanged();

signals:
    // A snippet's content went out, as an expansion or an insertion.
    void snippetUsed(const QUuid& id);

private:
    using Phase = ExpansionLifecycle::Phase;
    using Event = ExpansionLifecycle::Event;
    using Undo = ExpansionLifecycle::Undo;

    void startMonitoring();
    // Why typed keys are not looked at now; empty when they are.
    QString ignoredBecause();
    // One key's text, once it is known that keys are looked at now. `replayed`: it was held and
    // let go, so it is in the application already and more held keys may follow it.
    void takeKey(const QString& character, bool replayed = false);
    // Applies one key's text to the buffer; true when it was appended.
    bool applyKey(const QString& character);
    void checkForMatch(bool replayed = false);
    // Which snippets may expand in the focused application; none when no category is limited.
    // Where the application cannot be told (Wayland), a limited category's snippets expand
    // nowhere.
    TriggerIndex::Allowed expandsHere() const;
    // `wordEnd`: the key that ended the command's word; `endReached`: it is in the application.
    // A content that shows the clipboard first asks for its text (ReadingClipboard).
    void expand(const Snippet& snippet, const QString& wordEnd = {}, bool endReached = false);
    void clipboardAnswered(const Snippet& snippet, const QString& wordEnd, bool endReached,
                           const std::optional<QString>& clipboard);
    // `values`: the form's answer, once the command has been erased for it; a content with form
    // fields and no values yet asks for them first (FillingIn).
    void expandWith(const Snippet& snippet, const QString& wordEnd, bool endReached,
                    const std::optional<QString>& clipboard,
                    const std::optional<QHash<QString, QString>>& values = std::nullopt);
    // Erases the command (with the keys that slipped in after it) and then asks for the values.
    void askForValues(const Snippet& snippet, const QString& wordEnd, bool endReached,
                      const std::optional<QString>& clipboard);
    void commandErased();
    void valuesAnswered(const FormValueSource::Answer& answer);
    // A command that waits for a word to end has been typed: the next key decides. The keys
    // are held meanwhile where they can be, so that a Tab or Return that ends the word
    // reaches the application only after the content. Not for a key let go from a hold: the
    // keys after it have reached the application already and are looked at as they come.
    void awaitWordEnd(const Snippet& snippet, bool replayed);
    bool heldWhileAwaiting(const KeyStroke& stroke);
    // The key after an awaited command; true when it ended the word and the snippet expands.
    // `reachedApplication`: the key is in the application already (it was not held).
    bool wordEndDecided(const QString& next, bool reachedApplication);
    // No expansion after all (`why`: WordWentOn or TypingForgotten): held keys go on to the
    // application.
    void stopAwaiting(Event why = Event::WordWentOn);
    // The platform's number for the focused window; 0 where it cannot tell.
    quint64 focusedWindow() const;
    // Nothing typed so far completes a command (the buffer, an undo, a waiting command).
    void forgetTyping();
    bool remembersTyping() const;
    // The texts of keys that reached the application before a hold began, in order; `plainText`
    // turns false when one is not plain text (an editing key, a chord, an uncertain repeat).
    QStringList slippedTexts(const QList<KeyStroke>& strokes, bool& plainText);
    // Holds the keyboard unless it is held already; the filter sees each key held.
    KeyHold& holdKeys();
    void releaseHeldKeys();
    // Erases `erased` characters before the caret and types `typed` in their place, holding
    // the user's keys meanwhile. `undo` is what a BackSpace right after it may put back.
    // `caretBack` characters at the end of `typed` end up after the caret.
    void replace(int erased, QString typed, std::optional<Undo> undo, const QString& bufferAfter,
                 int caretBack = 0);
    bool heldKey(const KeyStroke& stroke);
    void expansionFinished();

    EnginePlatform m_platform;
    bool m_monitoring = false;

    SnippetStore& m_store;
    KeyboardOutput* m_output;
    Clock m_clock;
    KeystrokeBuffer m_buffer;
    quint64 m_bufferWindow = 0; // where the buffer's first key was typed
    double m_lastKeyDownTime;
    TriggerIndex m_index;
    quint64 m_indexedRevision = ~quint64(0);
    // Carried between translations by the key translator: non-zero after a dead key.
    quint32 m_deadKeyState = 0;

    std::function<bool()> m_keysIgnored;
    bool m_paused = false;
    QStringList m_excluded;
    bool m_undoEnabled = true;
    ClipboardSource* m_clipboard = nullptr;
    FormValueSource* m_formValues = nullptr;
    int m_pasteThreshold = 0;
    bool m_saidCannotHold = false;

    ExpansionLifecycle m_life;
    QTimer m_awaitTimer;
    // From a match until the expansion's held keys are let go (also when the keyboard could not
    // be held: letting go ends the output's typing for the monitor).
    std::unique_ptr<KeyHold> m_hold;
};
