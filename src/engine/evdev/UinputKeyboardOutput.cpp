#include "UinputKeyboardOutput.h"

#include "KeymapSource.h"
#include "Logging.h"

#include <QPointer>
#include <cerrno>
#include <cstring>
#include <linux/input.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

namespace {
// Evdev codes are xkb keycodes less 8.
constexpr uint32_t evdevOffset = 8;
// The most one stroke writes: up to three level keys pressed, the key's press and release, and
// the level keys let go at the end of the batch, each event with its SYN_REPORT.
constexpr int eventsPerStroke = 2 * (3 + 2 + 3);

// The modifiers that only choose a level of a key (Shift, and the level-3 and level-5 keys,
// which evdev keymaps put on Mod5 and Mod3): held by the user, they are planned around.
// Control, Alt and Super make every key a shortcut.
xkb_mod_mask_t levelModifiers(xkb_keymap* keymap) {
    xkb_mod_mask_t mask = 0;
    for (const char* name : {XKB_MOD_NAME_SHIFT, XKB_MOD_NAME_CAPS, "Mod3", "Mod5"}) {
        const xkb_mod_index_t index = xkb_keymap_mod_get_index(keymap, name);
        if (index != XKB_MOD_INVALID && index < 32)
            mask |= xkb_mod_mask_t(1) << index;
    }
    return mask;
}
} // namespace

UinputKeyboardOutput::UinputKeyboardOutput(KeymapSource& keymaps, QObject* parent)
    : QObject(parent), m_keymaps(keymaps) {
    m_stepTimer.setSingleShot(true);
    connect(&m_stepTimer, &QTimer::timeout, this, [this] { step(); });
}

UinputKeyboardOutput::~UinputKeyboardOutput() {
    if (m_job) {
        m_job->cancelled = true;
        m_job->finished = nullptr;
        finish();
    }
}

void UinputKeyboardOutput::setKeyboardStateQuery(std::function<KeyboardState()> query) {
    m_stateQuery = std::move(query);
}

void UinputKeyboardOutput::setMissingTextHandler(MissingTextHandler handler) {
    m_missingText = std::move(handler);
}

void UinputKeyboardOutput::perform(const Expansion& actions, std::function<void()> finished) {
    if (m_job) {
        // One expansion at a time; the engine never asks for two.
        cancel();
        finish();
    }
    m_job.emplace();
    m_job->actions = actions;
    m_job->finished = std::move(finished);
    m_writeFailed = false;
    if (!m_sessionActive) {
        qCInfo(lcEngine).noquote()
            << QStringLiteral("Not typing: the session is not the active one");
        m_job->cancelled = true;
        finish();
        return;
    }
    if (m_fd < 0) {
        qCWarning(lcEngine).noquote()
            << QStringLiteral("Cannot type: there is no virtual keyboard to type with");
        m_job->cancelled = true;
        finish();
        return;
    }
    step();
}

void UinputKeyboardOutput::cancel() {
    if (m_job)
        m_job->cancelled = true;
}

void UinputKeyboardOutput::setSessionActive(bool active) {
    m_sessionActive = active;
    if (!active && m_job) {
        // Between batches (on the timer or waiting for a paste): it ends now.
        cancel();
        finish();
    }
}

bool UinputKeyboardOutput::prepare() {
    Job& job = *m_job;
    const KeyboardState state = m_stateQuery ? m_stateQuery() : KeyboardState{};
    if (state.baseMods != 0 && job.waitedMs < heldModifiersWaitMs) {
        job.waitedMs += heldModifiersPollMs;
        m_stepTimer.start(heldModifiersPollMs);
        return false;
    }
    xkb_keymap* keymap = m_keymaps.currentKeymap();
    if (keymap && (state.baseMods & ~levelModifiers(keymap)) != 0) {
        qCInfo(lcEngine).noquote()
            << QStringLiteral("Cancelled typing: Control, Alt or Super is still held");
        job.cancelled = true;
        job.planned = true;
        return true;
    }
    // The group the user's keyboards are in: the source hears of switches only while one of
    // Typolet's windows has the focus.
    const uint32_t group = m_stateQuery ? state.group : m_keymaps.currentGroup();
    UinputKeystrokePlanner::Conditions conditions{group, state.lockedMods, state.baseMods};
    m_planner.setKeymap(keymap, conditions);
    job.planned = true;
    if (conditions.lockedMods == 0 || missingCount(m_planner) == 0)
        return true;
    uint32_t remaining = 0;
    const QList<uint32_t> lockKeys =
        UinputKeystrokePlanner::lockKeysClearing(keymap, conditions, remaining);
    if (lockKeys.isEmpty())
        return true;
    UinputKeystrokePlanner unlocked;
    UinputKeystrokePlanner::Conditions unlockedConditions = conditions;
    unlockedConditions.lockedMods = remaining;
    unlocked.setKeymap(keymap, unlockedConditions);
    if (missingCount(unlocked) >= missingCount(m_planner))
        return true;
    for (const uint32_t code : lockKeys)
        tap(code);
    job.locksCleared = lockKeys;
    m_planner.setKeymap(keymap, unlockedConditions);
    return true;
}

int UinputKeyboardOutput::missingCount(const UinputKeystrokePlanner& planner) const {
    int count = 0;
    for (const ExpansionAction& action : std::as_const(m_job->actions))
        if (action.kind == ExpansionAction::Kind::Type ||
            action.kind == ExpansionAction::Kind::Paste)
            for (const auto& step : planner.plan(action.text))
                count += int(step.missing.size());
    return count;
}

void UinputKeyboardOutput::step() {
    if (!m_job)
        return;
    if (!m_job->cancelled && !m_job->planned && !prepare())
        return;
    runBatch();
}

void UinputKeyboardOutput::runBatch() {
    Job& job = *m_job;
    m_eventsInBatch = 0;
    while (!job.cancelled && job.action < job.actions.size()) {
        if (m_eventsInBatch + eventsPerStroke > eventsPerBatch) {
            setModifiers({});
            m_stepTimer.start(batchIntervalMs);
            return;
        }
        const ExpansionAction& action = job.actions[job.action];
        if (action.kind == ExpansionAction::Kind::Erase ||
            action.kind == ExpansionAction::Kind::MoveLeft) {
            const bool erase = action.kind == ExpansionAction::Kind::Erase;
            const uint32_t keysym = erase ? XKB_KEY_BackSpace : XKB_KEY_Left;
            uint32_t code = m_planner.keyCodeOf(keysym);
            if (code == 0) // a keymap without them: the standard keys
                code = (erase ? KEY_BACKSPACE : KEY_LEFT) + evdevOffset;
            if (job.position < action.count) {
                setModifiers({});
                tap(code);
                ++job.position;
                continue;
            }
        } else {
            // A text meant for the clipboard is typed too: which application has the focus,
            // and so which keys would paste there, is not for us to see in a Wayland session.
            if (!job.steps)
                job.steps = m_planner.plan(action.text);
            if (job.position < job.steps->size()) {
                const UinputKeystrokePlanner::Step& next = (*job.steps)[job.position++];
                if (next.missing.isEmpty()) {
                    setModifiers(next.stroke.modifierKeys);
                    tap(next.stroke.keyCode);
                    continue;
                }
                setModifiers({});
                if (m_missingText) {
                    job.waitingForPaste = true;
                    m_missingText(next.missing, [this, alive = QPointer<QObject>(this)] {
                        if (!alive || !m_job || !m_job->waitingForPaste)
                            return;
                        m_job->waitingForPaste = false;
                        QMetaObject::invokeMethod(this, [this] { step(); }, Qt::QueuedConnection);
                    });
                    return;
                }
                // Which characters were skipped reveals snippet text: only with typed-key
                // diagnostics on; otherwise the count alone, once the text is done.
                for (const char32_t codePoint : next.missing.toUcs4())
                    qCInfo(lcKeys).noquote()
                        << QStringLiteral("Skipped a character that no key can type: U+") +
                               QString::number(uint(codePoint), 16).toUpper().rightJustified(4, u'0');
                job.skipped += int(next.missing.toUcs4().size());
                continue;
            }
        }
        ++job.action;
        job.position = 0;
        job.steps.reset();
    }
    finish();
}

void UinputKeyboardOutput::finish() {
    m_stepTimer.stop();
    setModifiers({});
    for (const uint32_t code : std::as_const(m_job->locksCleared))
        tap(code);
    Job job = std::move(*m_job);
    m_job.reset();
    if (job.skipped > 0)
        qCInfo(lcEngine).noquote()
            << QStringLiteral("Skipped %1 character(s) that no key can type").arg(job.skipped);
    if (job.finished)
        QMetaObject::invokeMethod(this, job.finished, Qt::QueuedConnection);
}

void UinputKeyboardOutput::setModifiers(const QList<uint32_t>& keyCodes) {
    if (!m_job || m_job->modifiersDown == keyCodes)
        return;
    QList<uint32_t>& down = m_job->modifiersDown;
    for (qsizetype i = down.size() - 1; i >= 0; --i)
        if (!keyCodes.contains(down[i]))
            key(down[i], false);
    for (const uint32_t code : keyCodes)
        if (!down.contains(code))
            key(code, true);
    down = keyCodes;
}

void UinputKeyboardOutput::tap(uint32_t keyCode) {
    key(keyCode, true);
    key(keyCode, false);
}

void UinputKeyboardOutput::key(uint32_t keyCode, bool down) {
    writeEvent(EV_KEY, uint16_t(keyCode - evdevOffset), down ? 1 : 0);
    // One report per key: a reader applies a report's events together.
    writeEvent(EV_SYN, SYN_REPORT, 0);
}

void UinputKeyboardOutput::writeEvent(uint16_t type, uint16_t code, int32_t value) {
    if (m_writeFailed || m_fd < 0)
        return;
    input_event event{};
    event.type = type;
    event.code = code;
    event.value = value;
    ssize_t written = -1;
    do
        written = ::write(m_fd, &event, sizeof event);
    while (written < 0 && errno == EINTR);
    if (written == ssize_t(sizeof event)) {
        ++m_eventsInBatch;
        return;
    }
    m_writeFailed = true;
    if (m_job)
        m_job->cancelled = true;
    qCWarning(lcEngine).noquote()
        << QStringLiteral("Stopped typing: the virtual keyboard does not take keys (%1)")
               .arg(QString::fromLocal8Bit(std::strerror(written < 0 ? errno : EIO)));
}
