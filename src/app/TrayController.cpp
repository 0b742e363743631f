#include "TrayController.h"

#include "ContentView.h"
#include "Preferences.h"

#include "SymbolImage.h"
#include "UiTheme.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QSessionManager>
#include <QSystemTrayIcon>

TrayController::TrayController(Autostart& autostart, Preferences& preferences,
                         QObject* parent)
    : QObject(parent), m_confirmation(m_appWindows), m_windows(autostart, preferences),
      m_preferences(preferences) {
    // Quit requests reach the application object as QEvent::Quit, whoever sends them.
    qApp->installEventFilter(this);
    connect(qApp, &QGuiApplication::commitDataRequest, this, &TrayController::commitData,
            Qt::DirectConnection);
}

TrayController::~TrayController() {
    if (qApp != nullptr)
        qApp->removeEventFilter(this);
}

void TrayController::setUp(QMainWindow* mainWindow) {
    // Closing the last window hides it; Typolet keeps running in the tray.
    QApplication::setQuitOnLastWindowClosed(false);
    m_appWindows.setMainWindow(mainWindow);
    // One action for both menus, so they always agree; the preference is what it shows.
    m_pauseAction = new QAction(tr("Pause Expansion"), this);
    m_pauseAction->setCheckable(true);
    m_pauseAction->setChecked(m_preferences.paused());
    connect(m_pauseAction, &QAction::toggled, this, [this](bool paused) {
        // In force at once either way; a pause that did not reach the disk is said, not lost.
        if (!m_preferences.setPaused(paused) && m_trayIcon && m_trayIcon->isVisible())
            m_trayIcon->showMessage(tr("Typolet"),
                                      paused ? tr("Expansion is paused, but this could not be "
                                                  "saved yet; Typolet tries again.")
                                             : tr("Expansion is on again, but this could not be "
                                                  "saved yet; Typolet tries again."),
                                      QSystemTrayIcon::Warning);
    });
    connect(&m_preferences, &Preferences::pausedChanged, this, [this](bool paused) {
        m_pauseAction->setChecked(paused);
        if (m_trayIcon) {
            m_trayIcon->setIcon(SymbolImage::trayIcon(paused));
            m_trayIcon->setToolTip(toolTipText(paused));
        }
    });
    setupMainMenu(mainWindow);
    setUpTrayIcon();
}

void TrayController::showPauseKeys(const QKeySequence& keys) {
    m_pauseAction->setText(keys.isEmpty() ? tr("Pause Expansion")
                                          : tr("Pause Expansion") + QLatin1Char('\t') +
                                                keys.toString(QKeySequence::NativeText));
}

void TrayController::addLibraryActions(const QList<QAction*>& actions) {
    m_fileMenu->insertActions(m_libraryActionsEnd, actions);
}

void TrayController::addInsertAction(QAction* action) {
    // Last before Quit: the entries above keep their places (and their keys in the menu).
    m_trayMenu->insertAction(m_quitSeparator, action);
}

void TrayController::setupMainMenu(QMainWindow* mainWindow) {
    auto* content = qobject_cast<ContentView*>(mainWindow->centralWidget());
    m_editor = content;

    // File: what the library holds and what leaves it; Quit last.
    m_fileMenu = mainWindow->menuBar()->addMenu(tr("&File"));
    if (content) {
        QAction* newSnippet = m_fileMenu->addAction(tr("New Snippet\u2026"));
        newSnippet->setObjectName(QStringLiteral("newSnippet"));
        newSnippet->setShortcut(QKeySequence::New);
        connect(newSnippet, &QAction::triggered, content, &ContentView::showAddSnippetDialog);
        QAction* newCategory = m_fileMenu->addAction(tr("New Category\u2026"));
        newCategory->setObjectName(QStringLiteral("newCategory"));
        newCategory->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
        connect(newCategory, &QAction::triggered, content, &ContentView::showAddCategoryDialog);
        m_fileMenu->addSeparator();
    }
    m_libraryActionsEnd = m_fileMenu->addSeparator();
    m_fileMenu->addAction(m_pauseAction);
    m_fileMenu->addSeparator();
    QAction* quit = m_fileMenu->addAction(tr("Quit"));
    quit->setObjectName(QStringLiteral("quit"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setMenuRole(QAction::NoRole);
    connect(quit, &QAction::triggered, this, &TrayController::quitApp);

    // Edit: the editor's own, then the preferences.
    m_editMenu = mainWindow->menuBar()->addMenu(tr("&Edit"));
    if (content) {
        QAction* find = m_editMenu->addAction(tr("Find"));
        find->setObjectName(QStringLiteral("find"));
        find->setShortcut(QKeySequence::Find);
        connect(find, &QAction::triggered, content, [content] {
            content->searchField()->setFocus(Qt::ShortcutFocusReason);
            content->searchField()->selectAll();
        });
        QAction* remove = m_editMenu->addAction(tr("Delete\u2026"));
        remove->setObjectName(QStringLiteral("delete"));
        // Text fields keep the key for themselves; elsewhere it deletes what is selected.
        remove->setShortcut(QKeySequence::Delete);
        connect(remove, &QAction::triggered, content, &ContentView::deleteSelection);
        m_editMenu->addSeparator();
    }
    QAction* preferences = m_editMenu->addAction(tr("Preferences\u2026"));
    preferences->setObjectName(QStringLiteral("preferences"));
    preferences->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    preferences->setMenuRole(QAction::NoRole);
    connect(preferences, &QAction::triggered, this, &TrayController::showPreferences);

    m_helpMenu = mainWindow->menuBar()->addMenu(tr("&Help"));
    QAction* help = m_helpMenu->addAction(tr("Typolet Help"));
    help->setObjectName(QStringLiteral("help"));
    help->setShortcut(QKeySequence(Qt::Key_F1));
    connect(help, &QAction::triggered, this, [this] { m_windows.openHelpWindow(); });
    QAction* about = m_helpMenu->addAction(tr("About Typolet"));
    about->setObjectName(QStringLiteral("about"));
    about->setMenuRole(QAction::NoRole);
    connect(about, &QAction::triggered, this, &TrayController::showAbout);

    // The key bindings work in the main window (they live on its menu bar) and are also given to
    // the Preferences and About windows when those are built; they stay window-wide rather
    // than application-wide so the tray menu's own Ctrl+Q is never ambiguous with them.
    m_windowActions = {preferences, quit, help};
    for (QAction* action : std::as_const(m_windowActions))
        action->setShortcutContext(Qt::WindowShortcut);
}

void TrayController::setUpTrayIcon() {
    m_trayMenu = std::make_unique<QMenu>();
    QAction* open = m_trayMenu->addAction(tr("Open Typolet"));
    open->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    connect(open, &QAction::triggered, this, &TrayController::openApp);
    m_trayMenu->addAction(m_pauseAction);
    m_excludeAction = m_trayMenu->addAction(tr("Exclude This Application"));
    m_excludeAction->setEnabled(false);
    // Named as the menu opens, before it takes the keyboard: the application in use.
    connect(m_trayMenu.get(), &QMenu::aboutToShow, this, [this] {
        const QString name = m_lastApplication ? m_lastApplication() : QString();
        const bool excluded =
            m_preferences.excludedApplications().contains(name, Qt::CaseInsensitive);
        // Typolet's own windows never expand anything; there is nothing to exclude.
        const bool own = name.compare(QCoreApplication::applicationName(), Qt::CaseInsensitive) == 0 ||
                         name.compare(QGuiApplication::desktopFileName(), Qt::CaseInsensitive) == 0;
        const bool known = !name.isEmpty() && !own;
        m_excludeAction->setText(!known    ? tr("Exclude This Application")
                                 : excluded ? tr("Include “%1” Again").arg(name)
                                            : tr("Exclude “%1”").arg(name));
        m_excludeAction->setEnabled(known);
        m_excludeAction->setData(name);
        fillExcludedMenu();
    });
    connect(m_excludeAction, &QAction::triggered, this, [this] {
        const QString name = m_excludeAction->data().toString();
        QStringList names = m_preferences.excludedApplications();
        if (names.removeIf([&name](const QString& n) {
                return n.compare(name, Qt::CaseInsensitive) == 0;
            }) == 0)
            names << name;
        m_preferences.setExcludedApplications(names);
    });
    // Every excluded application, each to be included again.
    m_excludedMenu = m_trayMenu->addMenu(tr("Excluded Applications"));
    m_excludedMenu->setObjectName(QStringLiteral("excludedMenu"));
    fillExcludedMenu();
    m_quitSeparator = m_trayMenu->addSeparator();
    QAction* quit = m_trayMenu->addAction(tr("Quit"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setMenuRole(QAction::NoRole);
    connect(quit, &QAction::triggered, this, &TrayController::quitApp);
    // The menu shows its keys; they act while it is open (see eventFilter). As key bindings of
    // their own they would clash with the menu bar's Ctrl+Q, so they never match as such.
    for (QAction* action : {open, quit})
        action->setShortcutContext(Qt::WidgetShortcut);
    m_trayMenu->installEventFilter(this);

    m_trayIcon.reset();
    // No tray on this desktop: no tray icon. A later launch of Typolet still brings the
    // windows back (see SingleInstanceGuard).
    if (!QSystemTrayIcon::isSystemTrayAvailable())
        return;
    m_trayIcon = std::make_unique<QSystemTrayIcon>();
    m_trayIcon->setIcon(SymbolImage::trayIcon(m_preferences.paused()));
    m_trayIcon->setToolTip(toolTipText(m_preferences.paused()));
    m_trayIcon->setContextMenu(m_trayMenu.get());
    // A left click opens the same menu as a right click does; a quick second click arrives as
    // a double click and must open it too.
    connect(m_trayIcon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
                    popUpTrayMenu();
            });
    m_trayIcon->show();
}

void TrayController::fillExcludedMenu() {
    m_excludedMenu->clear();
    const QStringList names = m_preferences.excludedApplications();
    for (const QString& name : names) {
        QAction* include = m_excludedMenu->addAction(tr("Include “%1” Again").arg(name));
        connect(include, &QAction::triggered, this, [this, name] {
            QStringList left = m_preferences.excludedApplications();
            left.removeAll(name);
            m_preferences.setExcludedApplications(left);
        });
    }
    m_excludedMenu->menuAction()->setVisible(!names.isEmpty());
}

QString TrayController::toolTipText(bool paused) {
    return paused ? tr("Typolet \u2014 paused") : tr("Typolet \u2014 expanding");
}

void TrayController::popUpTrayMenu() {
    if (!m_trayMenu || m_trayMenu->isVisible())
        return;
    // Next to the icon rather than under the pointer, so the menu does not cover the icon
    // and a second click on the icon does not land on an entry: below it on a top panel,
    // above it when there is no room below.
    const QRect icon = m_trayIcon ? m_trayIcon->geometry() : QRect();
    if (!icon.isValid()) {
        m_trayMenu->popup(QCursor::pos());
        return;
    }
    QPoint position = icon.bottomLeft() + QPoint(0, 1);
    const QScreen* screen = QGuiApplication::screenAt(icon.center());
    const QSize menuSize = m_trayMenu->sizeHint();
    if (screen != nullptr && position.y() + menuSize.height() > screen->geometry().bottom())
        position = icon.topLeft() - QPoint(0, menuSize.height() + 1);
    m_trayMenu->popup(position);
}

void TrayController::showPreferences() {
    const bool firstTime = m_windows.preferencesWindow() == nullptr;
    m_windows.openPreferencesWindow();
    if (firstTime)
        m_windows.preferencesWindow()->addActions(m_windowActions);
}

void TrayController::showAbout() {
    const bool firstTime = m_windows.aboutWindow() == nullptr;
    m_windows.openAboutWindow();
    if (firstTime)
        m_windows.aboutWindow()->addActions(m_windowActions);
}

void TrayController::openApp() {
    m_appWindows.showAll();
}

void TrayController::quitApp() {
    if (!confirmQuit())
        return;
    // Approved: the Quit event this sends must not ask again.
    QCoreApplication::quit();
}

bool TrayController::confirmQuit() {
    if (m_terminationApproved)
        return true;
    // One question at a time: a second request while it is open is refused.
    if (m_asking)
        return false;
    m_asking = true;
    const bool approved =
        m_confirmation.confirmQuit() && (!m_editor || m_editor->settleEdits());
    m_asking = false;
    if (approved) {
        m_terminationApproved = true;
        emit terminating();
    }
    return approved;
}

void TrayController::terminateWithoutAsking() {
    m_terminationApproved = true;
    emit terminating();
    QCoreApplication::quit();
}

void TrayController::commitData(QSessionManager& manager) {
    // Without interaction allowed the session ends regardless; nothing can be asked.
    if (!manager.allowsInteraction())
        return;
    if (confirmQuit())
        manager.release(); // done asking; the session may end
    else
        manager.cancel(); // "Run in Background" or "Cancel": the log-out is refused
}

bool TrayController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_trayMenu.get() && event->type() == QEvent::KeyPress) {
        const auto* press = static_cast<QKeyEvent*>(event);
        const QKeySequence pressed(press->keyCombination());
        const QList<QAction*> actions = m_trayMenu->actions();
        for (QAction* action : actions) {
            if (!action->shortcut().isEmpty() && action->shortcut() == pressed) {
                m_trayMenu->hide();
                action->trigger();
                return true;
            }
        }
    }
    if (watched == qApp && event->type() == QEvent::Quit) {
        if (!confirmQuit()) {
            event->ignore();
            return true; // refused: the application keeps running
        }
    }
    return QObject::eventFilter(watched, event);
}
