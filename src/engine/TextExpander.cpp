#include "TextExpander.h"

#include "FocusedApplication.h"

#include "Logging.h"
#include "GraphemeText.h"
#include "KeyHold.h"
#include "KeyMonitor.h"
#include "KeyTranslator.h"
#include "ClipboardSource.h"
#include "CommandCase.h"
#include "KeyboardOutput.h"
#include "PermissionProbe.h"
#include "PlaceholderText.h"
#include "PasswordFieldWatch.h"
#include "SnippetStore.h"

#include <QPointer>

#include <chrono>

namespace {
double wallClockSeconds() {
    using namespace std::chrono;
    return static_cast<double>(
               duration_cast<microseconds>(system_clock::now().time_since_epoch()).count()) /
           1e6;
}

// Why keys are ignored while a password field has the focus; the key's own line then says no
// more than this.
const QString inPasswordField = QStringLiteral("a password field has the focus");

// A Tab or Return may move on from where it was typed (another field, a sent message).
bool leavesTheField(const QString& character) {
    return character == u"\t" || character == u"\r" || character == u"\n";
}

// Only BackSpace takes the character before the caret; Delete takes the one after it.
bool isBackspace(const QString& character) {
    return character == QChar(0x08);
}

// Keys after which what stands before the caret is no longer what the buffer holds: the caret
// went elsewhere (arrows, Home, End, Page Up/Down, Return or Tab that may leave the line or
// field), text changed where the buffer cannot follow (Delete, Shift+Insert), or the
// application ran a command (a key with Control, Alt or Super).
bool movesTheCaret(const QString& character) {
    if (character.size() != 1)
        return false;
    const char16_t code = character.front().unicode();
    return code == u'\t' || code == u'\r' || code == u'\n' || code == 0x7F ||
           (code >= 0x1C && code <= 0x1F) || code == KeyTranslator::caretKeyText ||
           code == KeyTranslator::chordText;
}
} // namespace

TextExpander::TextExpander(SnippetStore& store, KeyboardOutput* output, Clock clock,
                           QObject* parent)
    : QObject(parent), m_store(store), m_output(output),
      m_clock(clock ? std::move(clock) : Clock(wallClockSeconds)), m_lastKeyDownTime(m_clock()) {
    // A command left waiting as typing stops: the keyboard is not held any longer than a buffer
    // lives.
    m_awaitTimer.setSingleShot(true);
    m_awaitTimer.setInterval(static_cast<int>(bufferTimeout * 1000));
    connect(&m_awaitTimer, &QTimer::timeout, this, [this] { stopAwaiting(); });
}

TextExpander::TextExpander(SnippetStore& store, const EnginePlatform& platform, Clock clock,
                           QObject* parent)
    : TextExpander(store, platform.output, std::move(clock), parent) {
    m_platform = platform;
    startMonitoring();
}

TextExpander::~TextExpander() {
    if ((m_life.expanding() || m_life.phase() == Phase::FillingIn) && m_output)
        m_output->cancel();
}

void TextExpander::startMonitoring() {
    PermissionProbe* permissions = m_platform.permissions;
    if (!permissions || !permissions->canObserveKeys()) {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("Cannot see keys: %1")
                   .arg(permissions ? permissions->observeProblem() : QStringLiteral("no platform to watch them through"));
        return;
    }
    if (!permissions->canPostKeys()) {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("Cannot type: %1").arg(permissions->postProblem());
        return;
    }
    // The monitor may outlive the engine, and keys let go after it is gone still come.
    const QPointer<TextExpander> self(this);
    if (!m_platform.monitor || !m_platform.translator ||
        !m_platform.monitor->start([self](const KeyStroke& stroke) {
            if (self)
                self->keyDown(stroke);
        })) {
        qCWarning(lcEngine).noquote() << QStringLiteral("Could not start watching the keyboard");
        return;
    }
    m_platform.monitor->setPointerPressHandler([self] {
        if (self)
            self->pointerPressed();
    });
    m_platform.monitor->setFocusChangeHandler([self] {
        if (self)
            self->focusChanged();
    });
    m_monitoring = true;
}

bool TextExpander::remembersTyping() const {
    return !m_buffer.isEmpty() || m_life.phase() == Phase::UndoWindow ||
           m_life.phase() == Phase::AwaitingWordEnd;
}

void TextExpander::pointerPressed() {
    // Clicks into the form: the command is erased already, the answer decides what goes out.
    if (m_life.phase() == Phase::FillingIn || !remembersTyping())
        return;
    qCInfo(lcKeys).noquote() << QStringLiteral("Pointer pressed: buffer cleared");
    forgetTyping();
}

void TextExpander::focusChanged() {
    // The form takes the focus and gives it back: the expansion goes on with the answer.
    if (m_life.phase() == Phase::FillingIn)
        return;
    if (m_life.expanding()) {
        // An expansion under way keeps going, but no undo follows it into another window; one
        // that waits for the clipboard is off: its command is not before this caret.
        m_life.output().pendingUndo.reset();
        m_life.output().focusMovedWhileReading = m_life.phase() == Phase::ReadingClipboard;
        m_buffer.clear(); // what comes after the content is taken in afresh
        return;
    }
    if (!remembersTyping())
        return;
    qCInfo(lcKeys).noquote() << QStringLiteral("Focus changed: buffer cleared");
    forgetTyping();
}

quint64 TextExpander::focusedWindow() const {
    return m_platform.focus ? m_platform.focus->window() : 0;
}

QString TextExpander::ignoredBecause() {
    if (m_paused)
        return QStringLiteral("paused");
    if (m_keysIgnored && m_keysIgnored())
        return QStringLiteral("in Typolet's own window");
    if (m_platform.passwordField && m_platform.passwordField->passwordFieldFocused())
        return inPasswordField;
    if (!m_platform.focus || m_excluded.isEmpty())
        return {};
    const QString application = m_platform.focus->name();
    if (!application.isEmpty() && m_excluded.contains(application, Qt::CaseInsensitive))
        return QStringLiteral("in an excluded application");
    return {};
}

void TextExpander::apply(const EngineSettings& settings) {
    setPaused(settings.paused);
    m_excluded = settings.excludedApplications;
    m_undoEnabled = settings.undoWithBackspace;
    m_pasteThreshold = settings.pasteThreshold;
}

void TextExpander::setPaused(bool paused) {
    if (m_paused == paused)
        return;
    m_paused = paused;
    m_buffer.clear();
    qCInfo(lcEngine).noquote() << (paused ? QStringLiteral("Expansion paused")
                                          : QStringLiteral("Expansion resumed"));
}

void TextExpander::keyDown(const KeyStroke& stroke) {
    if (m_life.phase() == Phase::FillingIn) {
        // Typed into the form (or while it opens): its values are the user's own business, so
        // not even the key code is told, and nothing of it is typing to match.
        qCInfo(lcKeys).noquote() << QStringLiteral("Key down while a form is open: ignored");
        return;
    }
    if (m_life.phase() == Phase::ReadingClipboard) {
        m_life.output().typedWhileReading.append(stroke);
        return;
    }
    KeyTranslator* translator = m_platform.translator;
    // Modifier keys alone are not typing; they never count as a key-down here.
    if (!translator || translator->isModifierKey(stroke.keyCode))
        return;
    const QString ignored = ignoredBecause();
    if (ignored == inPasswordField) {
        // Not even the key code: it would tell which keys make up the password.
        qCInfo(lcKeys).noquote() << QStringLiteral("Key down: %1 (ignored)").arg(ignored);
        forgetTyping(); // a command typed before never expands into the password field
        return;
    }
    qCInfo(lcKeys).noquote() << QStringLiteral("Key down: ") + QString::number(stroke.keyCode) +
                       (stroke.repeats ? QStringLiteral(" repeated %1 times").arg(stroke.repeats)
                                       : QString()) +
                       (ignored.isEmpty() ? QString() : QStringLiteral(" (%1: ignored)").arg(ignored));
    if (!ignored.isEmpty()) {
        // What was typed there never completes a command typed afterwards.
        forgetTyping();
        return;
    }
    if (stroke.late) {
        // Typed while Typolet could not run: the application has had it, and whatever came
        // after it, for a while. It completes no command and nothing is erased for it.
        translator->translateKeyCode(stroke.keyCode, stroke.state, m_deadKeyState);
        qCInfo(lcKeys).noquote() << QStringLiteral("Key read late: buffer cleared");
        forgetTyping();
        return;
    }
    if (stroke.repeats > 0)
        m_life.handle(Event::NextKeyTaken); // a held key is more than the one BackSpace that undoes
    if (stroke.repeats > 0 && stroke.repeatCountUncertain) {
        // One repeat more or less would leave the buffer unlike the application's text.
        qCInfo(lcKeys).noquote() << QStringLiteral("Held key with an uncertain repeat count: buffer cleared");
        m_buffer.clear();
        return;
    }
    const auto text = translator->translateKeyCode(stroke.keyCode, stroke.state, m_deadKeyState);
    if (!text)
        return;
    if (stroke.repeats == 0) {
        takeKey(*text, stroke.replayed); // asked above whether keys are looked at: once per key
        return;
    }
    // The application has all the repeats already: only the buffer they leave is checked.
    bool appended = false;
    for (int i = 0; i < stroke.repeats; ++i)
        appended = applyKey(*text) || appended;
    if (appended)
        checkForMatch(stroke.replayed);
}

bool TextExpander::isAccepted(QStringView character) {
    // Categories are per code point, so a character outside the BMP is looked up whole.
    for (const char32_t codePoint : character.toUcs4()) {
        if (QChar::isLetterOrNumber(codePoint) || QChar::isMark(codePoint) ||
            QChar::isPunct(codePoint) || QChar::category(codePoint) == QChar::Separator_Space)
            return true;
    }
    return false;
}

bool TextExpander::applyKey(const QString& character) {
    qCInfo(lcKeys).noquote() << QStringLiteral("Key pressed: ") + character;

    const double now = m_clock();
    if (now - m_lastKeyDownTime > bufferTimeout) {
        qCInfo(lcKeys).noquote() << QStringLiteral("Pause in typing: buffer cleared");
        m_buffer.clear();
    }
    m_lastKeyDownTime = now;

    if (isBackspace(character)) {
        if (!m_buffer.isEmpty()) {
            m_buffer.removeLast();
            qCInfo(lcKeys).noquote() << QStringLiteral("BackSpace; buffer: '") + m_buffer.text() +
                               QLatin1Char('\'');
        }
        return false;
    }
    if (movesTheCaret(character)) {
        // The buffer is the text just before the caret or nothing: no command is ever
        // completed across such a key, so nothing the user did not just type is erased.
        if (!m_buffer.isEmpty())
            qCInfo(lcKeys).noquote() << QStringLiteral("Caret moved or text changed elsewhere: buffer cleared");
        m_buffer.clear();
        return false;
    }
    if (!isAccepted(character))
        return false;

    if (m_buffer.isEmpty())
        m_bufferWindow = focusedWindow();
    m_buffer.append(character);
    qCInfo(lcKeys).noquote() << QStringLiteral("Buffer: '") + m_buffer.text() + QLatin1Char('\'');
    return true;
}

void TextExpander::handleKeyPress(const QString& character) {
    if (m_life.phase() == Phase::FillingIn)
        return; // a key for the form
    if (!ignoredBecause().isEmpty()) {
        forgetTyping();
        return;
    }
    takeKey(character);
}

void TextExpander::takeKey(const QString& character, bool replayed) {
    // A command waits for its word to end and this key was not held: it is in the application.
    // Other programs that type (xdotool, an on-screen keyboard) are not held, also while the
    // keyboards are: their key decides as it stands in the application.
    if (m_life.phase() == Phase::AwaitingWordEnd &&
        (!m_life.awaited().keysHeld || !m_life.awaited().decided) &&
        wordEndDecided(character, true))
        return;
    // Only the very next key may undo an expansion, and only soon: later the caret may have
    // moved (a click, another window), and erasing there would destroy the user's text.
    std::optional<Undo> undo;
    if (m_life.phase() == Phase::UndoWindow) {
        Undo& open = m_life.undo();
        if (open.passing.isEmpty() || character != open.passing) {
            if (open.passing.isEmpty())
                undo = open;
            m_life.handle(Event::NextKeyTaken);
        } else {
            // The key that ended the word came back after the content; the undo waits for the
            // key after it.
            open.passing.clear();
        }
    }
    if (undo && m_undoEnabled && isBackspace(character) && m_clock() - undo->at <= bufferTimeout &&
        undo->window != focusedWindow()) {
        // The BackSpace went to another window: only its own character goes.
        qCInfo(lcKeys).noquote() << QStringLiteral("BackSpace in another window: no undo");
        undo.reset();
    }
    if (undo && m_undoEnabled && isBackspace(character) && m_clock() - undo->at <= bufferTimeout) {
        qCInfo(lcKeys).noquote() << QStringLiteral("BackSpace after an expansion: putting back '") +
                                        undo->command + QLatin1Char('\'');
        m_lastKeyDownTime = m_clock();
        m_bufferWindow = undo->window;
        // The BackSpace has taken the content's last character already.
        replace(undo->typed - 1, undo->command, std::nullopt, undo->command);
        return;
    }
    if (applyKey(character))
        checkForMatch(replayed);
}

QStringList TextExpander::slippedTexts(const QList<KeyStroke>& strokes, bool& plainText) {
    QStringList texts;
    for (const KeyStroke& stroke : strokes) {
        if (m_platform.translator->isModifierKey(stroke.keyCode))
            continue;
        const auto text =
            m_platform.translator->translateKeyCode(stroke.keyCode, stroke.state, m_deadKeyState);
        if (!text)
            continue;
        for (int i = 0; i <= stroke.repeats; ++i)
            texts.append(*text);
        plainText = plainText && !stroke.repeatCountUncertain && !text->isEmpty() &&
                    isAccepted(*text);
    }
    return texts;
}

void TextExpander::forgetTyping() {
    m_buffer.clear();
    if (m_life.phase() == Phase::AwaitingWordEnd)
        stopAwaiting(Event::TypingForgotten);
    else
        m_life.handle(Event::TypingForgotten); // an undo window closes
}

KeyHold& TextExpander::holdKeys() {
    if (!m_hold) {
        // The monitor may outlive the engine: a key held after it is gone goes on as it is.
        m_hold = std::make_unique<KeyHold>(
            *m_platform.monitor, [self = QPointer<TextExpander>(this)](const KeyStroke& stroke) {
                return !self || self->heldWhileAwaiting(stroke);
            });
    }
    return *m_hold;
}

void TextExpander::awaitWordEnd(const Snippet& snippet, bool replayed) {
    qCInfo(lcKeys).noquote() << QStringLiteral("Waiting for a word to end after '") +
                                    snippet.command + QLatin1Char('\'');
    m_life.handle(Event::CommandAwaitsWordEnd);
    m_life.awaited().snippet = snippet;
    m_awaitTimer.start();
    if (!m_monitoring || m_hold || replayed)
        return;
    KeyHold& hold = holdKeys();
    bool plainText = true;
    const QStringList slipped = slippedTexts(hold.takeSlipped(), plainText);
    if (!hold.holding() && slipped.isEmpty()) {
        releaseHeldKeys(); // the keys go on as they come; each is looked at when reported
        return;
    }
    m_life.awaited().keysHeld = slipped.isEmpty();
    if (slipped.isEmpty())
        return;
    // Keys reached the application before the hold: they decide, as they stand there.
    m_awaitTimer.stop();
    if (plainText && !slipped.contains(QStringLiteral("\t")) && Snippet::endsWord(slipped.first())) {
        m_life.awaited().decided = true;
        expand(snippet, slipped.join(QString()), true);
        return;
    }
    m_life.handle(Event::WordWentOn);
    for (const QString& text : std::as_const(slipped))
        handleKeyPress(text);
    releaseHeldKeys();
}

bool TextExpander::heldWhileAwaiting(const KeyStroke& stroke) {
    if (m_life.expanding())
        return heldKey(stroke);
    if (m_life.phase() != Phase::AwaitingWordEnd || m_life.awaited().decided ||
        m_platform.translator->isModifierKey(stroke.keyCode))
        return true;
    m_life.awaited().decided = true;
    m_awaitTimer.stop();
    // Only a look: the key is translated for real when it reaches the application. After a
    // dead key it gives a composed character, never a word end.
    const QString next = m_deadKeyState != 0
                             ? QString()
                             : m_platform.translator->peekText(stroke.keyCode, stroke.state)
                                   .value_or(QString());
    // Decided on the next turn of the event loop: the monitor has the key queued by then, so
    // letting go of it can replay it.
    QMetaObject::invokeMethod(this, [this, next] { wordEndDecided(next, false); },
                              Qt::QueuedConnection);
    return true;
}

bool TextExpander::wordEndDecided(const QString& next, bool reachedApplication) {
    if (m_life.phase() != Phase::AwaitingWordEnd)
        return false;
    const Snippet snippet = m_life.awaited().snippet;
    const bool keysHeld = m_life.awaited().keysHeld;
    m_awaitTimer.stop();
    // A Tab or Return that reached the application may have moved on (another field, a sent
    // message): nothing before the caret is known to be the command any more.
    const bool leavesField = leavesTheField(next);
    bool ends = Snippet::endsWord(next) && !(reachedApplication && leavesField);
    if (ends && m_indexedRevision == m_store.snippetsRevision()) {
        // A longer command that goes on with this character is what the user is typing.
        KeystrokeBuffer withNext = m_buffer;
        withNext.append(next);
        const auto longer = m_index.match(withNext, expandsHere());
        ends = !longer || GraphemeText::count(m_store.snippets()[*longer].command) <=
                              GraphemeText::count(snippet.command);
    }
    if (!ends) {
        qCInfo(lcKeys).noquote() << QStringLiteral("No word end after '") + snippet.command +
                                        QStringLiteral("': nothing expands");
        m_life.handle(Event::WordWentOn);
        if (!reachedApplication || keysHeld)
            releaseHeldKeys();
        return false;
    }
    const PlaceholderText placeholders(snippet.content);
    // A form takes the focus before the content goes out: a key let go then would land in the
    // form, so it goes to the application first (a Tab or Return there expands nothing).
    const bool firstToApplication =
        (placeholders.asksForValues() && m_formValues) ||
        (!leavesField && placeholders.uses(PlaceholderText::Kind::Cursor));
    if (!reachedApplication && firstToApplication) {
        // Let go now, the key would land where the caret goes back to. It goes to the
        // application first instead, and the expansion takes it in after the content.
        m_life.awaited().keysHeld = false;
        releaseHeldKeys();
        return false;
    }
    if (reachedApplication) {
        qCInfo(lcKeys).noquote() << QStringLiteral("Key pressed: ") + next;
        m_lastKeyDownTime = m_clock();
    }
    m_life.awaited().decided = true;
    expand(snippet, next, reachedApplication);
    return true;
}

void TextExpander::stopAwaiting(Event why) {
    if (m_life.phase() != Phase::AwaitingWordEnd)
        return;
    const bool held = m_life.awaited().keysHeld;
    m_life.handle(why);
    m_awaitTimer.stop();
    if (held)
        releaseHeldKeys();
}

void TextExpander::releaseHeldKeys() {
    // Not while an expansion runs: its keys are let go when its output is done.
    if (!m_life.expanding())
        m_hold.reset();
}

void TextExpander::checkForMatch(bool replayed) {
    qCInfo(lcKeys).noquote() << QStringLiteral("Checking buffer: '") + m_buffer.text() +
                       QLatin1Char('\'');

    const QList<Snippet>& snippets = m_store.snippets();
    if (m_indexedRevision != m_store.snippetsRevision()) {
        m_index.rebuild(snippets);
        m_indexedRevision = m_store.snippetsRevision();
    }
    const auto found = m_index.match(m_buffer, expandsHere());
    if (!found)
        return;
    if (focusedWindow() != m_bufferWindow) {
        // Typed partly in another window (the focus moved without a sign to us): the command
        // is not before this caret.
        qCInfo(lcKeys).noquote() << QStringLiteral("Command typed across windows: buffer cleared");
        m_buffer.clear();
        return;
    }
    if (m_life.expanding()) {
        // Only when the keyboard could not be held: the keys went on into the application
        // while the last expansion was typed, so this command is not where the buffer says.
        m_buffer.clear();
        return;
    }
    // A copy: later edits don't change what is typed.
    Snippet matched = snippets[*found];
    // The command as typed, in whatever case: that is what is erased, and what BackSpace puts
    // back. Matched character by character, it has as many characters as the stored one.
    if (matched.matchCase)
        matched.command = m_buffer.lastCharacters(GraphemeText::count(matched.command));
    if (matched.expandsAfterWordEnd())
        awaitWordEnd(matched, replayed);
    else
        expand(matched);
}

TriggerIndex::Allowed TextExpander::expandsHere() const {
    if (!m_store.anyCategoryLimited())
        return {};
    // The focus is asked once per look, and only when a limited category's snippet matches.
    auto names = std::make_shared<std::optional<QStringList>>();
    return [this, names](qsizetype index) {
        const Category::Limit limit = m_store.limitOf(m_store.snippets()[index].categoryId);
        if (!limit.limits())
            return true;
        if (!*names) {
            *names = m_platform.focus ? m_platform.focus->names() : QStringList();
            if ((*names)->isEmpty())
                qCInfo(lcEngine).noquote()
                    << QStringLiteral("The focused application is unknown: snippets of categories "
                                      "limited to applications do not expand");
        }
        return limit.expandsIn(**names);
    };
}

QString TextExpander::typeableText(const QString& content, int& leftOut) {
    QString text;
    text.reserve(content.size());
    for (const QChar c : content) {
        // BackSpace, Delete or Escape typed as keys would edit the user's text, not add to it.
        if (c.category() == QChar::Other_Control && c != u'\t' && c != u'\n' && c != u'\r')
            ++leftOut;
        else
            text.append(c);
    }
    return text;
}

Expansion TextExpander::replacement(int erased, const QString& text, const QString& retyped,
                                    int pasteThreshold) {
    if (pasteThreshold <= 0 || text.size() < pasteThreshold ||
        GraphemeText::count(text) < pasteThreshold)
        return {ExpansionAction::erase(erased), ExpansionAction::type(text + retyped)};
    Expansion steps{ExpansionAction::erase(erased), ExpansionAction::paste(text)};
    if (!retyped.isEmpty())
        steps.append(ExpansionAction::type(retyped));
    return steps;
}

void TextExpander::insert(const Snippet& snippet) {
    if (isExpanding() || m_life.phase() == Phase::FillingIn) {
        qCInfo(lcEngine).noquote() << QStringLiteral("Insertion skipped: an expansion is under way");
        return;
    }
    stopAwaiting();
    // With no command before the caret there is nothing to erase, and nothing for BackSpace
    // to put back.
    Snippet uncommanded = snippet;
    uncommanded.command.clear();
    expand(uncommanded);
}

void TextExpander::expand(const Snippet& snippet, const QString& wordEnd, bool endReached) {
    qCInfo(lcKeys).noquote() << QStringLiteral("Match found: '") + snippet.command +
                       QStringLiteral("' -> '") + snippet.content + QLatin1Char('\'');
    const PlaceholderText placeholders(snippet.content);
    if (!m_clipboard || !placeholders.uses(PlaceholderText::Kind::Clipboard)) {
        expandWith(snippet, wordEnd, endReached, std::nullopt);
        return;
    }
    // The owner may take its time or never answer: the keys go on meanwhile and are taken in
    // when the content goes out.
    m_life.handle(Event::ClipboardAsked);
    m_clipboard->readText([self = QPointer<TextExpander>(this), snippet, wordEnd,
                           endReached](std::optional<QString> text) {
        if (self)
            self->clipboardAnswered(snippet, wordEnd, endReached, text);
    });
}

void TextExpander::clipboardAnswered(const Snippet& snippet, const QString& wordEnd,
                                     bool endReached, const std::optional<QString>& clipboard) {
    if (m_life.output().focusMovedWhileReading) {
        // The command is not before the caret of the window that has the focus now.
        qCInfo(lcKeys).noquote() << QStringLiteral("Expansion skipped: the focus moved");
        const QList<KeyStroke> typed = std::exchange(m_life.output().typedWhileReading, {});
        m_life.handle(Event::ExpansionDropped);
        releaseHeldKeys();
        for (const KeyStroke& stroke : typed)
            keyDown(stroke);
        return;
    }
    expandWith(snippet, wordEnd, endReached, clipboard);
}

void TextExpander::expandWith(const Snippet& snippet, const QString& wordEnd, bool endReached,
                              const std::optional<QString>& clipboard,
                              const std::optional<QHash<QString, QString>>& values) {
    const PlaceholderText placeholders(snippet.content);
    if (!values && m_formValues && placeholders.asksForValues()) {
        askForValues(snippet, wordEnd, endReached, clipboard);
        return;
    }
    // With the form's values the command is gone already; what slipped in after it comes back
    // after the content.
    const bool commandErased = values.has_value();
    const QString slippedBeforeForm = commandErased ? m_life.filling().retyped : QString();
    const auto now = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(m_clock() * 1000));
    const PlaceholderText::Rendered rendered =
        placeholders.render(now, clipboard, QLocale(), values.value_or(QHash<QString, QString>()));
    if (rendered.clipboardMissing)
        qCInfo(lcEngine).noquote()
            << QStringLiteral("The clipboard holds no text: a clipboard placeholder typed nothing");
    if (!placeholders.issues().isEmpty())
        qCInfo(lcEngine).noquote()
            << QStringLiteral("Typed %1 unknown or malformed placeholder(s) as written")
                   .arg(placeholders.issues().size());

    int leftOut = 0;
    const qsizetype cursor = rendered.cursor < 0 ? rendered.text.size() : rendered.cursor;
    QString before = rendered.text.left(cursor), after = rendered.text.mid(cursor);
    // In the case the command was typed in: on the text as typed, so that a placeholder's
    // braces are never what is capitalised. An insertion has no command.
    if (snippet.matchCase)
        CommandCase::apply(CommandCase::of(snippet.command), before, after);
    const QString beforeCursor = typeableText(before, leftOut);
    QString typed = beforeCursor + typeableText(after, leftOut);
    if (leftOut > 0)
        qCWarning(lcEngine).noquote()
            << QStringLiteral("Left out %1 control character(s) of a snippet's content: only "
                              "text, tabs and line breaks are typed")
                   .arg(leftOut);
    int erased = commandErased ? 0 : static_cast<int>(GraphemeText::count(snippet.command));
    if (endReached) {
        // What ended the word is in the application already: it goes and comes back after the
        // content.
        if (!commandErased)
            erased += static_cast<int>(GraphemeText::count(wordEnd));
        typed += wordEnd;
    }
    typed += slippedBeforeForm;
    // Counted on the whole text, as the application will see it: a mark after the cursor
    // joins the character before it.
    // A Tab or Return still held lands where the caret is: it stays after the content, as
    // the user moves on, and the caret with it.
    const bool endStillHeld = !endReached && !wordEnd.isEmpty();
    const int caretBack =
        rendered.cursor < 0 || endStillHeld
            ? 0
            : static_cast<int>(GraphemeText::count(typed) - GraphemeText::count(beforeCursor));
    // BackSpace puts back the command with what ended its word, as it was typed; not after a
    // Tab or Return, which may have left the field, nor once the caret has moved back into the
    // content (what stands before it is no longer what was typed).
    std::optional<Undo> undo = Undo{snippet.command + wordEnd, 0, 0, {}};
    if (leavesTheField(wordEnd) || caretBack > 0 || snippet.command.isEmpty() ||
        !slippedBeforeForm.isEmpty()) {
        undo.reset();
    } else if (!endReached && !wordEnd.isEmpty()) {
        // It is held, and reaches the application right after the content.
        undo->typed = 1;
        undo->passing = wordEnd;
    }
    emit snippetUsed(snippet.id);
    replace(erased, typed, undo, {}, caretBack);
}

void TextExpander::askForValues(const Snippet& snippet, const QString& wordEnd,
                                bool endReached, const std::optional<QString>& clipboard) {
    int erased = static_cast<int>(GraphemeText::count(snippet.command));
    if (endReached)
        erased += static_cast<int>(GraphemeText::count(wordEnd));
    QList<KeyStroke> slippedKeys;
    if (m_life.phase() == Phase::ReadingClipboard)
        slippedKeys = std::exchange(m_life.output().typedWhileReading, {});
    QString retyped;
    if (m_monitoring) {
        KeyHold& hold = holdKeys();
        slippedKeys += hold.takeSlipped();
        bool plainText = true;
        const QStringList slipped = slippedTexts(slippedKeys, plainText);
        if (!plainText) {
            // As for any content: the command may no longer be before the caret.
            qCInfo(lcKeys).noquote() << QStringLiteral("Expansion skipped: other keys reached the "
                                                       "application first");
            m_life.keysAfterExpansion() = slipped + m_life.keysAfterExpansion();
            m_life.handle(Event::OutputStarted);
            expansionFinished();
            return;
        }
        retyped = slipped.join(QString());
        erased += static_cast<int>(GraphemeText::count(retyped));
    }
    m_life.handle(Event::ValuesAsked);
    ExpansionLifecycle::Filling& filling = m_life.filling();
    filling.snippet = snippet;
    filling.wordEnd = endReached ? wordEnd : QString();
    filling.retyped = retyped;
    filling.clipboard = clipboard;
    m_buffer.clear();
    qCInfo(lcEngine).noquote() << QStringLiteral("Erasing the command; a form asks for its values");
    if (!m_output || erased == 0) {
        commandErased();
        return;
    }
    if (m_monitoring)
        m_platform.monitor->ownTypingStarts();
    m_output->perform({ExpansionAction::erase(erased)},
                      [self = QPointer<TextExpander>(this)] {
                          if (self)
                              self->commandErased();
                      });
}

void TextExpander::commandErased() {
    if (m_life.phase() != Phase::FillingIn || m_life.filling().asked)
        return;
    m_life.filling().asked = true;
    // The keys go on to the application now; from the moment the form has the focus they are
    // the form's.
    m_hold.reset();
    m_formValues->askValues(m_life.filling().snippet,
                            [self = QPointer<TextExpander>(this)](
                                const FormValueSource::Answer& answer) {
                                if (self)
                                    self->valuesAnswered(answer);
                            });
}

void TextExpander::valuesAnswered(const FormValueSource::Answer& answer) {
    if (m_life.phase() != Phase::FillingIn || !m_life.filling().asked)
        return;
    const ExpansionLifecycle::Filling filling = m_life.filling();
    switch (answer.outcome) {
    case FormValueSource::Answer::Outcome::Filled:
        expandWith(filling.snippet, filling.wordEnd, true, filling.clipboard, answer.values);
        return;
    case FormValueSource::Answer::Outcome::Dismissed:
        // As it was typed: the command, what ended its word, and what followed at once.
        qCInfo(lcEngine).noquote() << QStringLiteral("Form dismissed: the command is put back");
        replace(0, filling.snippet.command + filling.wordEnd + filling.retyped, std::nullopt, {});
        return;
    case FormValueSource::Answer::Outcome::FocusLost:
        qCWarning(lcEngine).noquote()
            << QStringLiteral("The window typed in did not get the focus back: nothing typed");
        m_life.handle(Event::ExpansionDropped);
        m_buffer.clear();
        return;
    }
}

void TextExpander::replace(int erased, QString typed, std::optional<Undo> undo,
                           const QString& bufferAfter, int caretBack) {
    // Keys that reached the application while the clipboard was read come first.
    QList<KeyStroke> slippedKeys;
    if (m_life.phase() == Phase::ReadingClipboard)
        slippedKeys = std::exchange(m_life.output().typedWhileReading, {});
    QString retyped;
    if (m_monitoring) {
        KeyHold& hold = holdKeys();
        slippedKeys += hold.takeSlipped();
        if (!hold.holding() && !m_saidCannotHold) {
            m_saidCannotHold = true;
            qCWarning(lcEngine).noquote()
                << QStringLiteral("Could not hold the keyboard during an expansion (%1); keys "
                                  "typed meanwhile may land inside the text")
                       .arg(m_platform.monitor->canHoldKeys()
                                ? QStringLiteral("another program holds it")
                                : QStringLiteral("the keyboards are only read here, never taken"));
        }
        // Keys that reached the application after the command, before the hold began.
        bool plainText = true;
        const QStringList slipped = slippedTexts(slippedKeys, plainText);
        QStringList& keysAfter = m_life.keysAfterExpansion();
        if (!plainText) {
            // An editing key or a key chord followed the command at once: the command may no
            // longer be before the caret, so erasing it could destroy other text. Nothing goes
            // out, and the expansion ends at once.
            qCInfo(lcKeys).noquote() << QStringLiteral("Expansion skipped: other keys reached the "
                                              "application first");
            keysAfter = slipped + keysAfter;
            m_life.handle(Event::OutputStarted);
            expansionFinished();
            return;
        }
        // Plain text is erased with the command and typed again after the content.
        retyped = slipped.join(QString());
        erased += static_cast<int>(GraphemeText::count(retyped));
        if (caretBack > 0)
            caretBack += static_cast<int>(GraphemeText::count(retyped)); // not before the caret
        else
            keysAfter = slipped + keysAfter;
        if (!slipped.isEmpty())
            undo.reset(); // the next key has come already
    }

    m_buffer.clear();
    m_buffer.append(bufferAfter);
    qCInfo(lcKeys).noquote() << QStringLiteral("Typing: '") + typed + retyped + QLatin1Char('\'');
    if (undo) {
        undo->window = focusedWindow();
        undo->typed += static_cast<int>(GraphemeText::count(typed + retyped));
    }
    m_life.handle(Event::OutputStarted);
    m_life.output().pendingUndo = undo;
    if (!m_output) {
        expansionFinished();
        return;
    }
    if (m_monitoring)
        m_platform.monitor->ownTypingStarts();
    Expansion actions = replacement(erased, typed, retyped, m_pasteThreshold);
    if (caretBack > 0)
        actions.append(ExpansionAction::moveLeft(caretBack));
    m_output->perform(actions, [this] { expansionFinished(); });
}

bool TextExpander::heldKey(const KeyStroke& stroke) {
    if (!m_life.expanding() || !m_platform.translator->isEscapeKey(stroke.keyCode))
        return true;
    // Escape stops a long content; it was meant for Typolet, so the application never sees it.
    qCInfo(lcEngine).noquote() << QStringLiteral("Expansion cancelled with Escape");
    m_life.handle(Event::EscapePressed);
    if (m_output)
        m_output->cancel();
    return false;
}

void TextExpander::expansionFinished() {
    qCInfo(lcKeys).noquote() << QStringLiteral("Expansion done");
    if (m_life.leavesUndo()) {
        m_life.output().pendingUndo->at = m_clock();
        m_life.handle(Event::ContentWentOutWhole);
    } else {
        m_life.handle(Event::OutputFinished);
    }
    QStringList& keysAfter = m_life.keysAfterExpansion();
    while (!keysAfter.isEmpty() && !m_life.expanding())
        handleKeyPress(keysAfter.takeFirst());
    releaseHeldKeys(); // unless a new expansion holds on to the keys
}
