#include "TypoletApp.h"

#include "TrayController.h"
#include "Logging.h"
#include "SymbolImage.h"
#include "UiTheme.h"
#include "SingleInstanceGuard.h"

#include <QApplication>
#include <QMainWindow>

TypoletApp::TypoletApp(Parts parts, Autostart& autostart, Preferences& preferences,
                       const QString& serverName, QObject* parent)
    : QObject(parent), m_parts(std::move(parts)), m_autostart(autostart),
      m_preferences(preferences), m_guard(std::make_unique<SingleInstanceGuard>(serverName)) {}

TypoletApp::~TypoletApp() = default;

bool TypoletApp::start() {
    // Two engines would expand every snippet twice: a second launch only wakes the first.
    if (m_guard->claim() == SingleInstanceGuard::Role::Secondary) {
        qCInfo(lcApp).noquote() << (m_guard->notifiedPrimary()
                                         ? QStringLiteral("Typolet is already running; its "
                                                          "windows were brought forward")
                                         : QStringLiteral("Typolet is already running but "
                                                          "did not answer"));
        return false;
    }

    QApplication::setWindowIcon(SymbolImage::applicationIcon());
    // The menu entry's file name, which is also the AppStream id: Wayland compositors find the
    // icon and name of our windows through it.
    QGuiApplication::setDesktopFileName(QStringLiteral("app.typolet.Typolet"));

    m_trayController = std::make_unique<TrayController>(m_autostart, m_preferences);
    if (m_parts.startEngine)
        m_parts.startEngine();
    if (m_parts.checkPermissions)
        m_parts.checkPermissions();

    m_mainWindow = std::make_unique<QMainWindow>();
    m_mainWindow->setObjectName(QStringLiteral("mainWindow"));
    // "[*]": the editor marks the window while a snippet has edits not yet saved.
    m_mainWindow->setWindowTitle(QStringLiteral("Typolet[*]"));
    if (m_parts.makeMainView)
        m_mainWindow->setCentralWidget(m_parts.makeMainView().release());
    m_mainWindow->resize(m_mainWindow->sizeHint().expandedTo(QSize(mainWidth, mainHeight)));
    m_mainWindow->show();

    m_trayController->setUp(m_mainWindow.get());
    connect(m_guard.get(), &SingleInstanceGuard::activationRequested, m_trayController.get(),
            &TrayController::openApp);
    return true;
}
