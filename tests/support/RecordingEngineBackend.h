#pragma once

#include "EngineBackend.h"
#include "EngineSettings.h"
#include "Snippet.h"

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
    QList<QKeyCombination> grabs; // every grab of the pause keys asked for, in order
    std::function<void()> pressGrabbedKeys;
    QList<QKeyCombination> insertGrabs;
    std::function<void()> pressInsertKeys;
    QList<QUuid> inserted;

    Capabilities capabilities() const override { return can; }
    bool start(SnippetStore&, std::function<bool()> ignored) override {
        started = true;
        keysIgnored = std::move(ignored);
        return true;
    }
    void apply(const EngineSettings& settings) override { applied.append(settings); }
    bool grabGlobalKey(GlobalKey which, QKeyCombination keys,
                       std::function<void()> onPressed) override {
        (which == GlobalKey::pause ? grabs : insertGrabs).append(keys);
        (which == GlobalKey::pause ? pressGrabbedKeys : pressInsertKeys) =
            grabSucceeds ? std::move(onPressed) : nullptr;
        return grabSucceeds && keys.key() != Qt::Key(0);
    }
    void insert(const Snippet& snippet) override { inserted.append(snippet.id); }
    void setFormValueSource(FormValueSource*) override {}
    WindowFocus* windowFocus() const override { return nullptr; }
    QString focusedApplication() const override { return focused; }
    QString layoutInUse() const override { return {}; }
    void restore() override {}
};
