#pragma once

#include "CapturedDiagnostics.h"
#include "CompiledKeymapSource.h"
#include "FakeFocusedApplication.h"
#include "FakeKeyMonitor.h"
#include "FakePasswordFieldWatch.h"
#include "FakePermissionProbe.h"
#include "KeyTranslator.h"
#include "RecordingKeyboardOutput.h"
#include "TestLibrary.h"
#include "TextExpander.h"

#include <QCoreApplication>

#include <optional>

// An engine that only matches keys typed by hand, on a clock the test moves.
struct TypingRig : TestLibrary {
    RecordingKeyboardOutput output;
    double now = 1000;
    TextExpander engine{store, &output, [this] { return now; }};
    CapturedDiagnostics diagnostics;
    QStringList& lines = diagnostics.lines;

    // One key 0.1 s after the previous.
    void key(const QString& character) {
        now += 0.1;
        engine.handleKeyPress(character);
        QCoreApplication::processEvents();
    }
    void type(const QString& text) {
        for (const QChar c : text)
            key(QString(c));
    }
};

// A listening engine over fake platform pieces (a US keymap), created by start(); the output
// finishes when the test says so.
struct ListeningRig : TestLibrary {
    CompiledKeymapSource keymaps{QStringLiteral("us"), QStringLiteral("intl")};
    KeyTranslator translator{keymaps, QStringLiteral("en_US.UTF-8")};
    FakePermissionProbe permissions{true, true};
    FakeKeyMonitor monitor;
    RecordingKeyboardOutput output;
    FakePasswordFieldWatch passwordField;
    FakeFocusedApplication focus;
    CapturedDiagnostics diagnostics;
    std::optional<TextExpander> engine;

    explicit ListeningRig(bool monitorStarts = true) : monitor(monitorStarts) {
        output.finishAtOnce = false;
    }
    TextExpander& start() {
        return engine.emplace(store, EnginePlatform{&permissions, &monitor, &translator, &output,
                                                      &focus, &passwordField});
    }
    // Keys let go from a hold come back one per turn of the event loop.
    static void settle() {
        for (int turn = 0; turn < 50; ++turn)
            QCoreApplication::processEvents();
    }
    void press(std::initializer_list<uint32_t> keys) {
        for (const uint32_t key : keys)
            monitor.press(key);
        settle();
    }
    void finish() {
        output.finish();
        settle();
    }
};
