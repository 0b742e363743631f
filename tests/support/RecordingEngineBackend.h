#pragma once

#include "EngineBackend.h"
#include "EngineSettings.h"

#include <QKeyCombination>
#include <QList>

// A backend that records what the application asks of it; what the session allows is the
// test's choice.
class RecordingEngineBackend : public EngineBackend {
public:
    Capabilities can;
    bool grabSucceeds = true;
    QString focused;

    bool started = false;
    std::function<bool()> keysIgnored;
    QList<EngineSettings> applied;
    QList<QKeyCombination> grabs; // every grab asked for, in order
    std::function<void()> pressGrabbedKeys;

    Capabilities capabilities() const override { return can; }
    bool start(SnippetStore&, std::function<bool()> ignored) override {
        started = true;
        keysIgnored = std::move(ignored);
        return true;
    }
    void apply(const EngineSettings& settings) override { applied.append(settings); }
    bool grabGlobalKey(QKeyCombination keys, std::function<void()> onPressed) override {
        grabs.append(keys);
        pressGrabbedKeys = grabSucceeds ? std::move(onPressed) : nullptr;
        return grabSucceeds && keys.key() != Qt::Key(0);
    }
    QString focusedApplication() const override { return focused; }
    QString layoutInUse() const override { return {}; }
    void restore() override {}
};
