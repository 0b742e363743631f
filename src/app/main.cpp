#include "TrayController.h"
#include "ContentView.h"
#include "Logging.h"
#include "EngineBootstrap.h"
#include "EvdevEngineBootstrap.h"
#include "InputBackend.h"
#include "InputCheck.h"
#include "InsertSnippetWindow.h"
#include "LibraryFile.h"
#include "LibraryTransfer.h"
#include "RestoreDialog.h"
#include "Autostart.h"
#include "Preferences.h"
#include "SingleInstanceGuard.h"
#include "SnippetInserter.h"
#include "SnippetStore.h"
#include "SyncFolder.h"
#include "Translations.h"
#include "TypoletApp.h"
#include "UsageDescription.h"
#include "UsageStore.h"
#include "X11ConnectionLoss.h"
#include "X11PermissionProbe.h"
#include "XdgAutostartBackend.h"

#include <QAction>
#include <QApplication>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QGuiApplication>
#include <QKeySequence>
#include <QMenu>
#include <QMessageBox>
#include <QTextStream>
#include <QWindow>
#include <csignal>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>
#include <QSocketNotifier>
#include <QTimer>

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

// Every option Typolet takes: --help lists them, the manual page (resources/typolet.1.in) explains
// them. Built once the translations are in place, so the descriptions are in the user's language.
struct CommandLine {
    QCommandLineParser parser;
    const QCommandLineOption checkInput{
        QStringLiteral("check-input"),
        QCoreApplication::translate("main",
                                    "Prints the keyboard backend Typolet would use and whether it "
                                    "can see and type keys here, then exits: with 0 when it can, "
                                    "1 when not.")};
    const QCommandLineOption insert{
        QStringLiteral("insert"),
        QCoreApplication::translate("main",
                                    "Opens the Insert Snippet window of the running Typolet "
                                    "(starting Typolet first if none runs); bind it to keys in "
                                    "the desktop's keyboard settings where Typolet cannot take "
                                    "keys itself (Wayland).")};

    CommandLine() {
        parser.setApplicationDescription(QCoreApplication::translate(
            "main", "Typolet, a text expander: typing a snippet's command in any application "
                    "replaces it with the snippet's text."));
        parser.addHelpOption();
        parser.addVersionOption();
        parser.addOption(checkInput);
        parser.addOption(insert);
    }
};

// The options answered on the terminal (help, version, the input check) need no display, so
// they are read before Typolet looks for one.
bool answersOnTerminal(int argc, char* argv[]) {
    static constexpr const char* terminalOptions[] = {"--check-input", "--help", "-h", "-?",
                                                       "--help-all", "--version", "-v"};
    for (int i = 1; i < argc; ++i)
        for (const char* option : terminalOptions)
            if (qstrcmp(argv[i], option) == 0)
                return true;
    return false;
}
} // namespace

// The application shell around either engine: the windows, the tray, the preferences.
template <class Engine>
int runShell(QCoreApplication& app, Engine& engine, SnippetStore& store, LibraryFile& library,
             bool openInsertWindow) {
    // The shell starts the pieces in order: the engine (with its permission check, which only
    // schedules its guidance), then the main window around the snippet editor, then the menus
    // and the tray icon. A second launch starts none of them; it wakes the running Typolet.
    Autostart autostart(std::make_unique<XdgAutostartBackend>());
    Preferences preferences(library);
    preferences.setSessionAbilities(Engine::grabsGlobalKeys, Engine::tellsApplications);
    ContentView* editor = nullptr; // owned by the main window
    TypoletApp typolet(
        {[&engine, &store] { engine.start(store); },
         {}, // the permission check is part of the engine's start
         [&store, &editor] {
             auto view = std::make_unique<ContentView>(store);
             editor = view.get();
             return view;
         }},
        autostart, preferences);
    // The library in step with the other computers' through a synced folder, once one is chosen
    // (in the Preferences window's "Sync" card). Made after the single-instance check: a second
    // launch must not sync the same library a second time.
    SyncFolder sync(store, [&preferences] { return preferences.syncComputerId(); });
    if (openInsertWindow)
        typolet.instanceGuard().setRequest(SingleInstanceGuard::insertMessage);
    if (!typolet.start())
        return 0;
    typolet.trayController()->windows().setSyncFolder(&sync);
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
    typolet.trayController()->addLibraryActions(transfer.actions());
    // The library's history, beside import and export.
    QAction restore(QCoreApplication::translate("main", "Restore From Backup\u2026"));
    restore.setObjectName(QStringLiteral("restoreFromBackup"));
    QObject::connect(&restore, &QAction::triggered, editor, [&store, editor] {
        auto* dialog = new RestoreDialog(store, editor->window());
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->open();
    });
    typolet.trayController()->addLibraryActions({&restore});

    // A termination signal cannot answer the quit question: it ends Typolet at once.
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) == 0) {
        auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &app);
        QObject::connect(notifier, &QSocketNotifier::activated, &app,
                         [&typolet] { typolet.trayController()->terminateWithoutAsking(); });
        std::signal(SIGTERM, onTerminationSignal);
        std::signal(SIGINT, onTerminationSignal);
    }
    engine.setPaused(preferences.paused());
    QObject::connect(&preferences, &Preferences::pausedChanged, &app,
                     [&engine](bool paused) { engine.setPaused(paused); });
    // The pause keys (Ctrl+Alt+Space unless changed) pause and resume from anywhere, when no
    // other program holds them; a change in Preferences takes effect at once.
    const auto grabPauseKeys = [&engine, &preferences, &typolet](bool tellUser) {
        const QKeySequence keys = preferences.pauseKeys();
        const bool grabbed = engine.grabGlobalKey(
            keys, [&preferences] { preferences.setPaused(!preferences.paused()); });
        typolet.trayController()->showPauseKeys(grabbed ? keys : QKeySequence());
        if (grabbed || keys.isEmpty())
            return;
        const QString taken =
            QCoreApplication::translate("main", "%1 is taken by another program; pause from the "
                                                "tray menu, or choose other keys in Preferences.")
                .arg(keys.toString(QKeySequence::NativeText));
        qCWarning(lcApp).noquote() << taken;
        if (tellUser)
            QMessageBox::warning(nullptr, QCoreApplication::translate("main", "Keys Taken"), taken);
    };
    if (Engine::grabsGlobalKeys) {
        grabPauseKeys(false);
        QObject::connect(&preferences, &Preferences::pauseKeysChanged, &app,
                         [grabPauseKeys] { grabPauseKeys(true); });
    }
    // Insert Snippet: the window, what opens it (the tray, `typolet --insert`, the global
    // keys), and the use counts that order it, kept apart from the library.
    UsageStore usage;
    usage.setCounting(preferences.countUsage());
    QObject::connect(&preferences, &Preferences::countUsageChanged, &usage,
                     &UsageStore::setCounting);
    QObject::connect(&preferences, &Preferences::usageClearRequested, &usage, &UsageStore::clear);
    engine.setSnippetUsedHandler([&usage](const QUuid& id) {
        usage.recordUse(id, QDateTime::currentMSecsSinceEpoch());
    });
    // The editor says how often the snippet it shows went out.
    editor->setUsageDescriber([&usage](const QUuid& id) {
        return UsageDescription::describe(usage.usageOf(id), QDateTime::currentDateTime());
    });
    QObject::connect(&usage, &UsageStore::usageChanged, editor, &ContentView::refreshUsage);
    InsertSnippetWindow insertWindow(store, usage);
    SnippetInserter inserter(insertWindow, engine.windowFocus(),
                             [&engine](const Snippet& snippet) { engine.insertSnippet(snippet); });
    QAction insertAction(QCoreApplication::translate("main", "Insert Snippet\u2026"));
    insertAction.setObjectName(QStringLiteral("insertSnippet"));
    QObject::connect(&insertAction, &QAction::triggered, &inserter, &SnippetInserter::open);
    // Above Quit's separator, after the entries the tray menu had before it.
    QMenu* trayMenu = typolet.trayController()->statusMenu();
    QAction* quitSeparator = nullptr;
    for (QAction* entry : trayMenu->actions())
        if (entry->isSeparator())
            quitSeparator = entry;
    trayMenu->insertAction(quitSeparator, &insertAction);
    QObject::connect(&typolet.instanceGuard(), &SingleInstanceGuard::insertRequested, &inserter,
                     &SnippetInserter::open);
    const auto grabInsertKeys = [&engine, &preferences, &inserter, &insertAction](bool tellUser) {
        const QKeySequence keys = preferences.insertKeys();
        const bool grabbed = engine.grabInsertKey(keys, [&inserter] { inserter.open(); });
        const QString title = QCoreApplication::translate("main", "Insert Snippet\u2026");
        insertAction.setText(grabbed ? title + QLatin1Char('\t') +
                                           keys.toString(QKeySequence::NativeText)
                                     : title);
        if (grabbed || keys.isEmpty())
            return;
        const QString taken =
            QCoreApplication::translate("main", "%1 is taken by another program; open Insert "
                                                "Snippet from the tray menu, or choose other keys "
                                                "in Preferences.")
                .arg(keys.toString(QKeySequence::NativeText));
        qCWarning(lcApp).noquote() << taken;
        if (tellUser)
            QMessageBox::warning(nullptr, QCoreApplication::translate("main", "Keys Taken"), taken);
    };
    if (Engine::grabsGlobalKeys) {
        grabInsertKeys(false);
        QObject::connect(&preferences, &Preferences::insertKeysChanged, &app,
                         [grabInsertKeys] { grabInsertKeys(true); });
    }
    if (openInsertWindow)
        QTimer::singleShot(0, &inserter, &SnippetInserter::open);

    engine.setExcludedApplications(preferences.excludedApplications());
    QObject::connect(&preferences, &Preferences::excludedApplicationsChanged, &app,
                     [&engine](const QStringList& names) { engine.setExcludedApplications(names); });
    // Asked as the tray menu opens, before it takes the keyboard: the application in use.
    typolet.trayController()->setLastApplicationSource(
        [&engine] { return engine.focusedApplication(); });
    // Where Typolet reads the layout itself (Wayland), Preferences shows it and offers others.
    if constexpr (requires { engine.setKeyboardLayout(QString()); }) {
        engine.setKeyboardLayout(preferences.keyboardLayout());
        QObject::connect(&preferences, &Preferences::keyboardLayoutChanged, &app,
                         [&engine](const QString& name) { engine.setKeyboardLayout(name); });
        engine.setLayoutInUseHandler(
            [&preferences](const QString& inUse) { preferences.setLayoutInUse(inUse); });
    }
    if constexpr (requires { engine.setRemoteDesktopTokenStore({}, {}); })
        engine.setRemoteDesktopTokenStore(
            [&preferences] { return preferences.remoteDesktopToken(); },
            [&preferences](const QString& token) { preferences.setRemoteDesktopToken(token); });
    engine.setUndoWithBackspace(preferences.undoWithBackspace());
    QObject::connect(&preferences, &Preferences::undoWithBackspaceChanged, &app,
                     [&engine](bool on) { engine.setUndoWithBackspace(on); });
    engine.setPasteThreshold(preferences.effectivePasteThreshold());
    QObject::connect(&preferences, &Preferences::pasteChanged, &app, [&engine, &preferences] {
        engine.setPasteThreshold(preferences.effectivePasteThreshold());
    });
    // A command typed into one of Typolet's own fields (the snippet editor, the search) is
    // text for that field: while a shown Typolet window has the focus, nothing expands.
    engine.setKeysIgnoredWhen([] {
        const QWindow* focused = QGuiApplication::focusWindow();
        return focused != nullptr && focused->isVisible();
    });
    QObject::connect(&app, &QCoreApplication::aboutToQuit,
                     [&engine] { engine.restoreKeyboardMapping(); });
    return app.exec();
}

// No display for the windows on Wayland: the kernel-device engine starts for its permission
// guidance (on the terminal; the keyboards and /dev/uinput need no display), then Typolet says
// why it cannot run.
template <class Engine>
int runWithoutWindows(Engine& engine, SnippetStore& store, const QString& why) {
    engine.start(store);
    QCoreApplication::processEvents(); // shows the guidance that start() scheduled
    qCWarning(lcApp).noquote() << why;
    return 1;
}

int main(int argc, char* argv[]) {
    QCoreApplication::setOrganizationName(QStringLiteral("Typolet"));
    QCoreApplication::setApplicationName(QStringLiteral("Typolet"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TYPOLET_VERSION));
    const InputBackend::Choice backend = InputBackend::choose();

    if (answersOnTerminal(argc, argv)) {
        QCoreApplication app(argc, argv);
        Logging::configure();
        Translations::install(app);
        CommandLine commandLine;
        // --help and --version print their answer and exit here, as does an unknown option.
        commandLine.parser.process(app);
        QTextStream out(stdout);
        return InputCheck::run(out, backend);
    }

    // QApplication aborts when it cannot open a display, so look first, and keep that
    // connection until the toolkit has its own (see openDisplay).
    std::shared_ptr<void> probeConnection = X11PermissionProbe::openDisplay();
    const bool evdev = backend.kind == InputBackend::Kind::Evdev;
    const bool wayland = evdev && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    const bool hasDisplay = probeConnection != nullptr || wayland;
    std::unique_ptr<QCoreApplication> app;
    if (hasDisplay) {
        // If the toolkit cannot use the display after all, it runs without windows rather than abort.
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
    commandLine.parser.process(*app); // an unknown option ends Typolet here, with status 1
    // The library file's one owner: the store and the preferences both keep their data in it.
    LibraryFile library;
    SnippetStore store(library);
    if (evdev) {
        EvdevEngineBootstrap engine(hasDisplay);
        if (!hasDisplay)
            return runWithoutWindows(
                engine, store,
                QCoreApplication::translate(
                    "main", "Typolet needs a Wayland or X11 display for its windows and could not "
                            "open one (WAYLAND_DISPLAY is \"%1\", DISPLAY is \"%2\").")
                    .arg(qEnvironmentVariable("WAYLAND_DISPLAY"), qEnvironmentVariable("DISPLAY")));
        return runShell(*app, engine, store, library, commandLine.parser.isSet(commandLine.insert));
    }
    if (!hasDisplay) {
        // The X11 engine would only report that it cannot reach the extensions of a server it
        // never reached: the missing display is the one thing to say.
        qCWarning(lcApp).noquote()
            << QCoreApplication::translate("main", "Typolet needs an X11 display and could not open "
                                                   "one (DISPLAY is \"%1\").")
                   .arg(qEnvironmentVariable("DISPLAY"));
        return 1;
    }
    EngineBootstrap engine(hasDisplay);
    return runShell(*app, engine, store, library, commandLine.parser.isSet(commandLine.insert));
}
