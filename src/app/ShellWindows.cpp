#include "ShellWindows.h"

#include "AboutView.h"
#include "AppWindows.h"
#include "PreferencesView.h"
#include "SymbolImage.h"
#include "UiTheme.h"

#include <QGuiApplication>
#include <algorithm>
#include <QScreen>
#include <QShortcut>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {
// A titled window with a close button only: neither window is meant to be resized, minimised
// or maximised.
std::unique_ptr<QWidget> makeWindow(const QString& title, QSize size, QWidget* content) {
    auto window =
        std::make_unique<QWidget>(nullptr, Qt::Window | Qt::CustomizeWindowHint |
                                               Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    window->setWindowTitle(title);
    window->setWindowIcon(SymbolImage::applicationIcon());
    // Never shorter than what it holds: some rows only show in some sessions.
    window->setFixedSize(size.width(), std::max(size.height(), content->sizeHint().height()));
    window->setAutoFillBackground(true);
    window->setBackgroundRole(QPalette::Window);
    auto* layout = new QVBoxLayout(window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content, 0, Qt::AlignCenter);
    // Closed like any small desktop window: Escape or Ctrl+W.
    for (const QKeySequence& keys : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)}) {
        auto* close = new QShortcut(keys, window.get());
        QObject::connect(close, &QShortcut::activated, window.get(), &QWidget::close);
    }
    return window;
}

// Centres the window, frame included, on the primary screen. Before the window is first shown
// its frame is unknown, so this runs again once it is.
void centre(QWidget* window) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return;
    QRect frame = window->frameGeometry();
    frame.moveCenter(screen->availableGeometry().center());
    window->move(frame.topLeft());
}
} // namespace

ShellWindows::ShellWindows(Autostart& autostart, Preferences& preferences)
    : m_autostart(autostart), m_preferences(preferences) {}

ShellWindows::~ShellWindows() = default;

void ShellWindows::openPreferencesWindow() {
    if (!m_preferencesWindow) {
        m_preferencesView = new PreferencesView(m_autostart, m_preferences, m_sync);
        m_preferencesWindow =
            makeWindow(tr("Preferences"), preferencesSize, m_preferencesView);
        m_preferencesWindow->setObjectName(QStringLiteral("preferencesWindow"));
        centre(m_preferencesWindow.get());
        AppWindows::bringForward(m_preferencesWindow.get());
        centre(m_preferencesWindow.get());
        return;
    }
    AppWindows::bringForward(m_preferencesWindow.get());
}

void ShellWindows::openAboutWindow() {
    if (!m_aboutWindow) {
        m_aboutView = new AboutView();
        m_aboutWindow = makeWindow(tr("About Typolet"), aboutSize, m_aboutView);
        m_aboutWindow->setObjectName(QStringLiteral("aboutWindow"));
        centre(m_aboutWindow.get());
        AppWindows::bringForward(m_aboutWindow.get());
        centre(m_aboutWindow.get());
        return;
    }
    AppWindows::bringForward(m_aboutWindow.get());
}

void ShellWindows::openHelpWindow() {
    if (!m_helpWindow) {
        auto* page = new QTextBrowser();
        page->setObjectName(QStringLiteral("helpPage"));
        page->setAccessibleName(tr("Typolet Help"));
        page->setSource(QUrl(QStringLiteral("qrc:/typolet/help.html")));
        page->setFixedSize(helpSize);
        m_helpWindow = makeWindow(tr("Typolet Help"), helpSize, page);
        m_helpWindow->setObjectName(QStringLiteral("helpWindow"));
        centre(m_helpWindow.get());
    }
    AppWindows::bringForward(m_helpWindow.get());
}
