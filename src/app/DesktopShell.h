#pragma once

#include "InputBackend.h"

#include <memory>

class ClipboardSource;
class EngineBackend;
class PermissionAlertPresenter;
class Preferences;
class QCoreApplication;
class SnippetStore;

// Typolet in a desktop session: opens the display, makes the application object, the library,
// the engine backend that suits the session and the application around them, and runs until
// the user quits. Without a display it says why Typolet cannot run.
class DesktopShell {
public:
    // The program's exit status.
    static int run(int argc, char* argv[], const InputBackend::Choice& backend);

private:
    // The backend `choice` names, with what it needs from the application.
    static std::unique_ptr<EngineBackend> makeBackend(const InputBackend::Choice& choice,
                                                      PermissionAlertPresenter& guidance,
                                                      ClipboardSource& clipboard,
                                                      Preferences& preferences);
    // `openInsertWindow`: `typolet --insert`, asked of this Typolet or of the one running.
    static int runWithWindows(QCoreApplication& app, EngineBackend& engine, SnippetStore& store,
                              Preferences& preferences, bool openInsertWindow);
    static int runWithoutWindows(const InputBackend::Choice& choice, SnippetStore& store);
};
