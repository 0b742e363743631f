#pragma once

#include "EnginePlatform.h"
#include "KeystrokeBuffer.h"
#include "TriggerIndex.h"

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <functional>

class KeyboardOutput;
class ShortcutDataManager;


// The expansion engine's core: keeps what the user has just typed and, after every accepted
// character, looks for a snippet whose command the typed text ends with. On a match it erases
// the command and, 50 ms later, types the snippet's content through the KeyboardOutput.
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
    static constexpr double insertDelay = 0.05;

    // An engine that only matches: keys come in through handleKeyPress.
    TextExpander(ShortcutDataManager& store, KeyboardOutput* output, Clock clock = {},
                 QObject* parent = nullptr);
    // A listening engine: checks the permissions, starts the key monitor and observes
    // "ShortcutsUpdated".
    TextExpander(ShortcutDataManager& store, const EnginePlatform& platform, Clock clock = {},
                 QObject* parent = nullptr);
    ~TextExpander() override;

    // The process's engine, created on first use over the shared store and the platform given
    // to setSharedPlatform(). It is never destroyed: the key monitor calls into it until exit.
    static TextExpander& shared();
    static void setSharedPlatform(const EnginePlatform& platform);

    // Whether startMonitoring() got the key monitor running.
    bool isMonitoring() const { return m_monitoring; }

    // One key-down seen by the monitor: translated on the current layout and handed to
    // handleKeyPress.
    void keyDown(uint32_t keyCode);

    // One translated key-down: empty (a dead key's first press) or the key's text.
    void handleKeyPress(const QString& character);

    QString buffer() const { return m_buffer.text(); }
    double lastKeyDownTime() const { return m_lastKeyDownTime; }

    // Dead-key state carried between translations by the key translator.
    quint32 deadKeyState = 0;

    void setOutput(KeyboardOutput* output) { m_output = output; }

    // White space (Zs and Tab), letters, marks, numbers and punctuation; symbols and control
    // characters are ignored.
    static bool isAccepted(QStringView character);

private:
    void startMonitoring();
    void shortcutsUpdated(const QVariantMap& userInfo);
    void checkForMatch();

    EnginePlatform m_platform;
    bool m_monitoring = false;

    ShortcutDataManager& m_store;
    KeyboardOutput* m_output;
    Clock m_clock;
    KeystrokeBuffer m_buffer;
    double m_lastKeyDownTime;
    TriggerIndex m_index;
    quint64 m_indexedRevision = ~quint64(0);
};
