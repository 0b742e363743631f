#include "TypoletApp.h"

#include "ContentView.h"
#include "EngineBackend.h"
#include "Logging.h"
#include "OpenWindows.h"
#include "Preferences.h"
#include "SingleInstanceGuard.h"
#include "SymbolImage.h"
#include "TrayController.h"

#include <QApplication>
#include <QMainWindow>
#include <QMessageBox>
#include <QWindow>

TypoletApp::TypoletApp(EngineBackend& engine, SnippetStore& store, Autostart& autostart,
                       Preferences& preferences, const QString& serverName, QObject* parent)
    : QObject(parent), m_engine(engine), m_store(store), m_autostart(autostart),
      m_preferences(preferences), m_guard(std::make_unique<SingleInstanceGuard>(serverName)) {}

TypoletApp::~TypoletApp() = default;

bool TypoletApp::start() {
    // Two engines would expand every snippet twice: a second launch only wakes the first.
    if (m_guard->claim() == SingleInstanceGuard::Role::Secondary) {
        qCInfo(lcApp).noquote() << (m_guard->notifiedPrimary()
                                         ? QStringLiteral("Typolet is already running; it was "
                                                          "asked to %1")
                                               .arg(m_guard->requestDescription())
                                         : QStringLiteral("Typolet is already running but "
                                                          "did not answer"));
        return false;
    }

    QApplication::setWindowIcon(SymbolImage::applicationIcon());
    // The menu entry's file name, which is also the AppStream id: Wayland compositors find the
    // icon and name of our windows through it.
    QGuiApplication::setDesktopFileName(QStringLiteral("app.typolet.Typolet"));

    const EngineBackend::Capabilities can = m_engine.capabilities();
    m_preferences.setSessionAbilities(can.grabsGlobalKeys, can.tellsApplications);
    m_trayController = std::make_unique<TrayController>(m_autostart, m_preferences);
    // Said from the engine's start on, where the layout is read here (Wayland).
    connect(&m_engine, &EngineBackend::layoutInUseChanged, &m_preferences,
            &Preferences::setLayoutInUse);
    // A command typed into one of Typolet's own fields (the snippet editor, the search) is
    // text for that field: while a shown Typolet window has the focus, nothing expands.
    m_engine.start(m_store, [] {
        const QWindow* focused = QGuiApplication::focusWindow();
        return focused != nullptr && focused->isVisible();
    });

    m_mainWindow = std::make_unique<QMainWindow>();
    m_mainWindow->setObjectName(QStringLiteral("mainWindow"));
    // "[*]": the editor marks the window while a snippet has edits not yet saved.
    m_mainWindow->setWindowTitle(QStringLiteral("Typolet[*]"));
    auto editor = std::make_unique<ContentView>(m_store);
    m_editor = editor.get();
    // The category forms offer the applications with windows open, where the session lists them.
    if (OpenWindows* windows = m_engine.openWindows())
        editor->setOpenWindowClasses([windows] { return windows->windowClasses(); });
    m_mainWindow->setCentralWidget(editor.release());
    m_mainWindow->resize(m_mainWindow->sizeHint().expandedTo(QSize(mainWidth, mainHeight)));
    m_mainWindow->show();

    m_trayController->setUp(m_mainWindow.get());
    connect(m_guard.get(), &SingleInstanceGuard::activationRequested, m_trayController.get(),
            &TrayController::openApp);
    connectEngine();
    return true;
}

void TypoletApp::connectEngine() {
    m_engine.apply(m_preferences.engineSettings());
    connect(&m_preferences, &Preferences::engineSettingsChanged, this,
            [this] { m_engine.apply(m_preferences.engineSettings()); });
    // The pause keys (Ctrl+Alt+Space unless changed) pause and resume from anywhere, when no
    // other program holds them; a change in Preferences takes effect at once.
    if (m_engine.capabilities().grabsGlobalKeys) {
        grabPauseKeys(false);
        connect(&m_preferences, &Preferences::pauseKeysChanged, this,
                [this] { grabPauseKeys(true); });
        grabInsertKeys(false);
        connect(&m_preferences, &Preferences::insertKeysChanged, this,
                [this] { grabInsertKeys(true); });
    }
    // Asked as the tray menu opens, before it takes the keyboard: the application in use.
    m_trayController->setLastApplicationSource([this] { return m_engine.focusedApplication(); });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { m_engine.restore(); });
}

void TypoletApp::grabPauseKeys(bool tellUser) {
    const QKeySequence inForce = grabKeys(
        EngineBackend::GlobalKey::pause, m_preferences.pauseKeys(),
        [this] { m_preferences.setPaused(!m_preferences.paused()); },
        tr("%1 is taken by another program; pause from the tray menu, or choose other keys in "
           "Preferences."),
        tellUser);
    m_trayController->showPauseKeys(inForce);
}

void TypoletApp::grabInsertKeys(bool tellUser) {
    m_insertKeysInForce = grabKeys(
        EngineBackend::GlobalKey::insertSnippet, m_preferences.insertKeys(),
        [this] { emit insertKeysPressed(); },
        tr("%1 is taken by another program; open Insert Snippet from the tray menu, or choose "
           "other keys in Preferences."),
        tellUser);
    emit insertKeysInForceChanged(m_insertKeysInForce);
}

QKeySequence TypoletApp::grabKeys(EngineBackend::GlobalKey which, const QKeySequence& keys,
                                  std::function<void()> onPressed, const QString& takenMessage,
                                  bool tellUser) {
    // No keys: whatever was taken before is let go.
    const bool grabbed = m_engine.grabGlobalKey(
        which, keys.isEmpty() ? QKeyCombination() : keys[0], std::move(onPressed));
    if (grabbed || keys.isEmpty())
        return grabbed ? keys : QKeySequence();
    const QString taken = takenMessage.arg(keys.toString(QKeySequence::NativeText));
    qCWarning(lcApp).noquote() << taken;
    if (tellUser)
        QMessageBox::warning(nullptr, tr("Keys Taken"), taken);
    return {};
}
