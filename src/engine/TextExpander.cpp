#include "TextExpander.h"

#include "Diagnostics.h"
#include "GraphemeText.h"
#include "KeyMonitor.h"
#include "KeyTranslator.h"
#include "KeyboardOutput.h"
#include "MainQueue.h"
#include "NotificationCenter.h"
#include "PermissionProbe.h"
#include "ShortcutDataManager.h"

#include <chrono>

namespace {
double wallClockSeconds() {
    using namespace std::chrono;
    return static_cast<double>(
               duration_cast<microseconds>(system_clock::now().time_since_epoch()).count()) /
           1e6;
}
} // namespace

TextExpander::TextExpander(ShortcutDataManager& store, KeyboardOutput* output, Clock clock,
                           QObject* parent)
    : QObject(parent), m_store(store), m_output(output),
      m_clock(clock ? std::move(clock) : Clock(wallClockSeconds)), m_lastKeyDownTime(m_clock()) {}

TextExpander::TextExpander(ShortcutDataManager& store, const EnginePlatform& platform, Clock clock,
                           QObject* parent)
    : TextExpander(store, platform.output, std::move(clock), parent) {
    m_platform = platform;
    startMonitoring();
    NotificationCenter::defaultCenter().observe(
        QString::fromLatin1(ShortcutDataManager::shortcutsUpdatedNotification), this,
        [this](const QVariantMap& userInfo) { shortcutsUpdated(userInfo); });
}

TextExpander::~TextExpander() = default;

namespace {
EnginePlatform& sharedPlatform() {
    static EnginePlatform platform;
    return platform;
}
} // namespace

void TextExpander::setSharedPlatform(const EnginePlatform& platform) {
    sharedPlatform() = platform;
}

TextExpander& TextExpander::shared() {
    // Deliberately never deleted: the monitor holds on to it for the life of the process.
    static TextExpander* const engine =
        new TextExpander(ShortcutDataManager::shared(), sharedPlatform());
    return *engine;
}

void TextExpander::startMonitoring() {
    PermissionProbe* permissions = m_platform.permissions;
    if (!permissions || !permissions->canObserveKeys()) {
        Diagnostics::line(QStringLiteral("Need input monitoring permissions"));
        return;
    }
    if (!permissions->canPostKeys()) {
        // X11 has no prompt to raise; the guidance alert says what is missing.
        Diagnostics::line(QStringLiteral("Need accessibility permissions"));
        return;
    }
    if (!m_platform.monitor || !m_platform.translator ||
        !m_platform.monitor->start([this](uint32_t keyCode) { keyDown(keyCode); })) {
        Diagnostics::line(QStringLiteral("Failed to create event tap"));
        return;
    }
    m_monitoring = true;
}

void TextExpander::keyDown(uint32_t keyCode) {
    KeyTranslator* translator = m_platform.translator;
    // Modifier keys alone are not typing; they never count as a key-down here.
    if (!translator || translator->isModifierKey(keyCode))
        return;
    Diagnostics::typed(QStringLiteral("Event received: 10"));
    Diagnostics::typed(QStringLiteral("🔑 KeyCode: ") + QString::number(keyCode));
    if (const auto text = translator->translateKeyCode(keyCode, deadKeyState))
        handleKeyPress(*text);
}

void TextExpander::shortcutsUpdated(const QVariantMap& userInfo) {
    Diagnostics::line(QStringLiteral("🔄 Shortcuts updated, reloading data..."));
    const auto found = userInfo.constFind(QStringLiteral("shortcuts"));
    if (found != userInfo.cend() && found->canConvert<QList<Shortcut>>() &&
        found->metaType() == QMetaType::fromType<QList<Shortcut>>())
        Diagnostics::line(QStringLiteral("📝 Loaded ") +
                          QString::number(found->value<QList<Shortcut>>().size()) +
                          QStringLiteral(" shortcuts"));
}

bool TextExpander::isAccepted(QStringView character) {
    // Categories are per code point, so a character outside the BMP is looked up whole.
    for (const char32_t codePoint : character.toUcs4()) {
        if (codePoint == U'\t')
            return true;
        switch (QChar::category(codePoint)) {
        case QChar::Separator_Space:
        case QChar::Letter_Uppercase:
        case QChar::Letter_Lowercase:
        case QChar::Letter_Titlecase:
        case QChar::Letter_Modifier:
        case QChar::Letter_Other:
        case QChar::Mark_NonSpacing:
        case QChar::Mark_SpacingCombining:
        case QChar::Mark_Enclosing:
        case QChar::Number_DecimalDigit:
        case QChar::Number_Letter:
        case QChar::Number_Other:
        case QChar::Punctuation_Connector:
        case QChar::Punctuation_Dash:
        case QChar::Punctuation_Open:
        case QChar::Punctuation_Close:
        case QChar::Punctuation_InitialQuote:
        case QChar::Punctuation_FinalQuote:
        case QChar::Punctuation_Other:
            return true;
        default:
            break;
        }
    }
    return false;
}

void TextExpander::handleKeyPress(const QString& character) {
    Diagnostics::typed(QStringLiteral("Key pressed: ") + character);

    const double now = m_clock();
    if (now - m_lastKeyDownTime > bufferTimeout) {
        Diagnostics::typed(QStringLiteral("⏰ Buffer timeout - clearing"));
        m_buffer.clear();
    }
    m_lastKeyDownTime = now;

    if (character == QChar(0x7F) || character == QChar(0x08)) {
        if (!m_buffer.isEmpty()) {
            m_buffer.removeLast();
            Diagnostics::typed(QStringLiteral("🔙 Backspace - Buffer now: '") + m_buffer.text() +
                               QLatin1Char('\''));
        }
        return;
    }

    if (!isAccepted(character))
        return;

    m_buffer.append(character);
    Diagnostics::typed(QStringLiteral("Current buffer: '") + m_buffer.text() + QLatin1Char('\''));
    MainQueue::async([this] { checkForMatch(); }, this);
}

void TextExpander::checkForMatch() {
    Diagnostics::typed(QStringLiteral("🔍 Checking buffer: '") + m_buffer.text() +
                       QLatin1Char('\''));

    const QList<Shortcut>& shortcuts = m_store.shortcuts();
    if (m_indexedRevision != m_store.shortcutsRevision()) {
        m_index.rebuild(shortcuts);
        m_indexedRevision = m_store.shortcutsRevision();
    }
    const auto found = m_index.match(m_buffer);
    if (!found)
        return;

    const Shortcut shortcut = shortcuts[*found]; // our own copy: later edits don't change it
    Diagnostics::typed(QStringLiteral("✅ Match found! '") + shortcut.command +
                       QStringLiteral("' -> '") + shortcut.content + QLatin1Char('\''));
    m_buffer.clear();
    if (m_output)
        m_output->deleteCharacters(static_cast<int>(GraphemeText::count(shortcut.command)));
    MainQueue::after(insertDelay, [this, shortcut] {
        Diagnostics::typed(QStringLiteral("⌨️ Inserting text: '") + shortcut.content +
                           QLatin1Char('\''));
        if (m_output)
            m_output->insertText(shortcut.content);
        // The content has reached the server; its keys must not come back as typing.
        if (m_monitoring)
            m_platform.monitor->discardPendingKeys();
    }, this);
}
