#include "DesktopShell.h"

#include "Autostart.h"
#include "CommandLine.h"
#include "ConsolePermissionAlert.h"
#include "ContentView.h"
#include "EvdevEngineBackend.h"
#include "LibraryFile.h"
#include "LibraryTransfer.h"
#include "Logging.h"
#include "MessageBoxPermissionAlert.h"
#include "Preferences.h"
#include "RestoreDialog.h"
#include "SnippetStore.h"
#include "SyncFolder.h"
#include "SystemClipboard.h"
#include "Translations.h"
#include "TrayController.h"
#include "TypoletApp.h"
#include "X11ConnectionLoss.h"
#include "X11EngineBackend.h"
#include "X11PermissionProbe.h"
#include "XdgAutostartBackend.h"
#include "FillInForm.h"
#include "FormFiller.h"
#include "InsertSnippetWindow.h"
#include "SingleInstanceGuard.h"
#include "SnippetInserter.h"
#include "UsageDescription.h"
#include "UsageStore.h"

#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QTimer>
#include <QMessageBox>
#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
// Qt's own report of a broken X connection becomes our one line (Qt exits right after it).
QtMessageHandler previousMessageHandler = nullptr;

void filterQtMessages(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (text.contains(QLatin1String("X11 connection broke")) ||
        text.contains(QLatin1String("XLib IO error")))
        X11ConnectionLoss::end();
    // Hand every message on to the handler that was in place before ours (Qt's default).
    if (previousMessageHandler)
        previousMessageHandler(type, context, text);
}

// SIGTERM and SIGINT end the event loop normally, so spare keycodes are emptied on the way out.
int signalPipe[2] = {-1, -1};
void onTerminationSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalPipe[1], &byte, 1);
}
} // namespace

int DesktopShell::run(int argc, char* argv[], const InputBackend::Choice& backend) {
    // QApplication aborts when it cannot open a display, so look first, and keep that
    // connection until the toolkit has its own (see openDisplay).
    std::shared_ptr<void> probeConnection = X11PermissionProbe::openDisplay();
    const bool wayland = backend.kind == InputBackend::Kind::Evdev &&
                         !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    const bool hasDisplay = probeConnection != nullptr || wayland;
    std::unique_ptr<QCoreApplication> app;
    if (hasDisplay) {
        // If the toolkit cannot use the display after all, it runs without windows rather than
        // abort.
        qputenv("QT_QPA_PLATFORM", wayland ? "wayland;xcb;offscreen" : "xcb;offscreen");
        app = std::make_unique<QApplication>(argc, argv);
        probeConnection.reset();
        previousMessageHandler = qInstallMessageHandler(filterQtMessages);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    Logging::configure();
    Translations::install(*app);
    CommandLine commandLine;
    commandLine.process(*app); // an unknown option ends Typolet here, with status 1

    // The library file's one owner: the store and the preferences both keep their data in it.
    LibraryFile library;
    SnippetStore store(library);
    if (!hasDisplay)
        return runWithoutWindows(backend, store);
    Preferences preferences(library);
    MessageBoxPermissionAlert guidance;
    SystemClipboard clipboard;
    const std::unique_ptr<EngineBackend> engine =
        makeBackend(backend, guidance, clipboard, preferences);
    return runWithWindows(*app, *engine, store, preferences, commandLine.insertWanted());
}

std::unique_ptr<EngineBackend> DesktopShell::makeBackend(const InputBackend::Choice& choice,
                                                         PermissionAlertPresenter& guidance,
                                                         ClipboardSource& clipboard,
                                                         Preferences& preferences) {
    if (choice.kind == InputBackend::Kind::X11)
        return std::make_unique<X11EngineBackend>(guidance);
    auto evdev = std::make_unique<EvdevEngineBackend>(guidance, &clipboard);
    evdev->setRestoreTokenStore(
        [&preferences] { return preferences.remoteDesktopToken(); },
        [&preferences](const QString& token) { preferences.setRemoteDesktopToken(token); });
    return evdev;
}

int DesktopShell::runWithoutWindows(const InputBackend::Choice& choice, SnippetStore& store) {
    if (choice.kind == InputBackend::Kind::X11) {
        // The X11 engine would only report that it cannot reach the extensions of a server it
        // never reached: the missing display is the one thing to say.
        qCWarning(lcApp).noquote()
            << QCoreApplication::translate("main", "Typolet needs an X11 display and could not "
                                                   "open one (DISPLAY is \"%1\").")
                   .arg(qEnvironmentVariable("DISPLAY"));
        return 1;
    }
    // The kernel-device engine starts for its permission guidance, on the terminal (the
    // keyboards and /dev/uinput need no display), then Typolet says why it cannot run.
    ConsolePermissionAlert guidance;
    EvdevEngineBackend engine(guidance);
    engine.start(store, {});
    QCoreApplication::processEvents(); // shows the guidance that start() scheduled
    qCWarning(lcApp).noquote()
        << QCoreApplication::translate(
               "main", "Typolet needs a Wayland or X11 display for its windows and could not "
                       "open one (WAYLAND_DISPLAY is \"%1\", DISPLAY is \"%2\").")
               .arg(qEnvironmentVariable("WAYLAND_DISPLAY"), qEnvironmentVariable("DISPLAY"));
    return 1;
}

int DesktopShell::runWithWindows(QCoreApplication& app, EngineBackend& engine,
                                 SnippetStore& store, Preferences& preferences,
                                 bool openInsertWindow) {
    Autostart autostart(std::make_unique<XdgAutostartBackend>());
    TypoletApp typolet(engine, store, autostart, preferences);
    if (openInsertWindow)
        typolet.instanceGuard().setRequest(SingleInstanceGuard::insertMessage);
    // The library in step with the other computers' through a synced folder, once one is chosen
    // (in the Preferences window's "Sync" card). Made after the single-instance check: a second
    // launch must not sync the same library a second time.
    SyncFolder sync(store, [&preferences] { return preferences.syncComputerId(); });
    if (!typolet.start())
        return 0;
    TrayController& tray = *typolet.trayController();
    ContentView* editor = typolet.editor();
    tray.windows().setSyncFolder(&sync);
    if (!preferences.syncFolder().isEmpty()) {
        if (const auto error = sync.start(preferences.syncFolder()))
            qCWarning(lcApp).noquote() << *error;
    }
    // A change here that lost to one made on another computer at the same time: said once, over
    // the editor; the losing version is in the history.
    QObject::connect(&sync, &SyncFolder::collisionsKept, editor, [editor](const QString& message) {
        auto* note = new QMessageBox(QMessageBox::Information,
                                     QCoreApplication::translate("main", "Changed on Two Computers"),
                                     message, QMessageBox::Ok, editor->window());
        note->setAttribute(Qt::WA_DeleteOnClose);
        note->open();
    });
    editor->setSaveEditsOnLeave(preferences.saveEditsOnLeave());
    // The category shown last time, or "All Snippets": never a view that looks empty.
    if (const auto last = store.category(QUuid::fromString(preferences.lastCategory()));
        last && !preferences.lastCategory().isEmpty())
        editor->setSelectedCategory(last);
    QObject::connect(&app, &QCoreApplication::aboutToQuit, editor, [editor, &preferences] {
        const auto shown = editor->selectedCategory();
        preferences.setLastCategory(shown ? shown->id.toString(QUuid::WithoutBraces) : QString());
    });
    QObject::connect(&preferences, &Preferences::saveEditsOnLeaveChanged, editor,
                     &ContentView::setSaveEditsOnLeave);
    // Import and export in the File menu, for the library and the category the editor shows.
    LibraryTransfer transfer(store, *editor);
    tray.addLibraryActions(transfer.actions());
    // The library's history, beside import and export.
    QAction restore(QCoreApplication::translate("main", "Restore From Backup\u2026"));
    restore.setObjectName(QStringLiteral("restoreFromBackup"));
    QObject::connect(&restore, &QAction::triggered, editor, [&store, editor] {
        auto* dialog = new RestoreDialog(store, editor->window());
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->open();
    });
    tray.addLibraryActions({&restore});

    // Insert Snippet: the window, what opens it (the tray, `typolet --insert`, the insert
    // keys), and the use counts that order it, kept apart from the library.
    UsageStore usage;
    usage.setCounting(preferences.countUsage());
    QObject::connect(&preferences, &Preferences::countUsageChanged, &usage,
                     &UsageStore::setCounting);
    QObject::connect(&preferences, &Preferences::usageClearRequested, &usage, &UsageStore::clear);
    QObject::connect(&engine, &EngineBackend::snippetUsed, &usage, [&usage](const QUuid& id) {
        usage.recordUse(id, QDateTime::currentMSecsSinceEpoch());
    });
    // The editor says how often the snippet it shows went out.
    editor->setUsageDescriber([&usage](const QUuid& id) {
        return UsageDescription::describe(usage.usageOf(id), QDateTime::currentDateTime());
    });
    QObject::connect(&usage, &UsageStore::usageChanged, editor, &ContentView::refreshUsage);
    InsertSnippetWindow insertWindow(store, usage);
    SnippetInserter inserter(insertWindow, engine.windowFocus(),
                             [&engine](const Snippet& snippet) { engine.insert(snippet); });
    QAction insertAction;
    insertAction.setObjectName(QStringLiteral("insertSnippet"));
    const auto showInsertKeys = [&insertAction](const QKeySequence& keys) {
        const QString title = QCoreApplication::translate("main", "Insert Snippet\u2026");
        insertAction.setText(keys.isEmpty() ? title
                                            : title + QLatin1Char('\t') +
                                                  keys.toString(QKeySequence::NativeText));
    };
    showInsertKeys(typolet.insertKeysInForce());
    QObject::connect(&typolet, &TypoletApp::insertKeysInForceChanged, &insertAction,
                     showInsertKeys);
    QObject::connect(&insertAction, &QAction::triggered, &inserter, &SnippetInserter::open);
    QObject::connect(&typolet, &TypoletApp::insertKeysPressed, &inserter, &SnippetInserter::open);
    QObject::connect(&typolet.instanceGuard(), &SingleInstanceGuard::insertRequested, &inserter,
                     &SnippetInserter::open);
    tray.addInsertAction(&insertAction);
    // Contents with form fields: the engine asks, the form over the window typed in answers.
    FillInForm fillInForm;
    FormFiller formFiller(fillInForm, engine.windowFocus());
    engine.setFormValueSource(&formFiller);
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &formFiller,
                     [&engine] { engine.setFormValueSource(nullptr); });
    if (openInsertWindow)
        QTimer::singleShot(0, &inserter, &SnippetInserter::open);

    // A termination signal cannot answer the quit question: it ends Typolet at once.
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) == 0) {
        auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &app);
        QObject::connect(notifier, &QSocketNotifier::activated, &app,
                         [&tray] { tray.terminateWithoutAsking(); });
        std::signal(SIGTERM, onTerminationSignal);
        std::signal(SIGINT, onTerminationSignal);
    }
    return app.exec();
}
