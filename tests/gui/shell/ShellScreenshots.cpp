// Renders the shell's windows to PNG files, in a light and a dark palette, so they can be
// looked at without a desktop: Preferences, About, the quit question, the tray menu and the
// application menu, and the icons at panel sizes.
//
//   typolet_screenshots_shell OUTPUT_FOLDER
//
// Runs on the offscreen platform (QT_QPA_PLATFORM=offscreen); settings and the autostart
// entry go to a temporary folder, never to the user's own.

#include "AppDelegate.h"
#include "LoginItemManager.h"
#include "LoginPreferences.h"
#include "QuitConfirmation.h"
#include "ShellStyle.h"
#include "ShellWindows.h"
#include "XdgAutostartBackend.h"

#include <QApplication>
#include <QDir>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>

namespace {
QPalette darkPalette() {
    QPalette p;
    const QColor window(40, 40, 43);
    const QColor base(30, 30, 32);
    const QColor text(232, 232, 235);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(58, 58, 62));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::Highlight, QColor(10, 132, 255));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, QColor(64, 156, 255));
    p.setColor(QPalette::ToolTipBase, window);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, QColor(140, 140, 145));
    p.setColor(QPalette::Light, QColor(75, 75, 80));
    p.setColor(QPalette::Midlight, QColor(62, 62, 66));
    p.setColor(QPalette::Mid, QColor(50, 50, 54));
    p.setColor(QPalette::Dark, QColor(20, 20, 22));
    p.setColor(QPalette::Shadow, Qt::black);
    p.setColor(QPalette::Disabled, QPalette::Text, QColor(120, 120, 125));
    p.setColor(QPalette::Disabled, QPalette::WindowText, QColor(120, 120, 125));
    p.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(120, 120, 125));
    return p;
}

bool save(QWidget* widget, const QString& path) {
    const bool ok = widget->grab().save(path);
    std::printf("%s %s\n", ok ? "wrote" : "FAILED", qPrintable(path));
    return ok;
}

// The tray and application icons at the sizes panels and menus use, on a light and a dark
// panel.
bool saveIcons(const QString& path) {
    const QList<int> sizes = {16, 22, 24, 32, 48, 64};
    const int cell = 72;
    QImage sheet(cell * sizes.size(), cell * 4, QImage::Format_ARGB32);
    sheet.fill(Qt::transparent);
    QPainter painter(&sheet);
    const QList<QColor> panels = {QColor(240, 240, 240), QColor(35, 35, 38)};
    const QList<QIcon> icons = {ShellStyle::trayIcon(), ShellStyle::applicationIcon()};
    int row = 0;
    for (const QIcon& icon : icons) {
        for (const QColor& panel : panels) {
            painter.fillRect(0, row * cell, sheet.width(), cell, panel);
            for (int i = 0; i < sizes.size(); ++i) {
                const int s = sizes[i];
                icon.paint(&painter,
                           QRect(i * cell + (cell - s) / 2, row * cell + (cell - s) / 2, s, s));
            }
            ++row;
        }
    }
    painter.end();
    const bool ok = sheet.save(path);
    std::printf("%s %s\n", ok ? "wrote" : "FAILED", qPrintable(path));
    return ok;
}

bool shootAll(const QString& folder, const QString& suffix) {
    QTemporaryDir scratch;
    LoginPreferences preferences(scratch.filePath(QStringLiteral("Typolet.conf")));
    LoginItemManager loginItems(std::make_unique<XdgAutostartBackend>(
        scratch.filePath(QStringLiteral("autostart")), QStringLiteral("/usr/bin/typolet")));
    ShellWindows windows(loginItems, preferences);

    bool ok = true;
    windows.openPreferencesWindow();
    QApplication::processEvents();
    ok &= save(windows.preferencesWindow(),
               folder + QStringLiteral("/preferences-%1.png").arg(suffix));

    windows.openAboutWindow();
    QApplication::processEvents();
    ok &= save(windows.aboutWindow(), folder + QStringLiteral("/about-%1.png").arg(suffix));

    // The two menus, as the tray and the menu bar open them.
    QMainWindow mainWindow;
    AppDelegate delegate(loginItems, preferences);
    delegate.applicationDidFinishLaunching(&mainWindow);
    for (QMenu* menu : {delegate.statusMenu(), delegate.applicationMenu()}) {
        menu->popup(QPoint(0, 0));
        QApplication::processEvents();
        const QString name = menu == delegate.statusMenu() ? QStringLiteral("tray-menu")
                                                           : QStringLiteral("application-menu");
        ok &= save(menu, folder + QStringLiteral("/%1-%2.png").arg(name, suffix));
        menu->hide();
    }

    std::unique_ptr<QMessageBox> alert(QuitConfirmation::createAlert());
    alert->show();
    QApplication::processEvents();
    ok &= save(alert.get(), folder + QStringLiteral("/quit-alert-%1.png").arg(suffix));
    alert->hide();
    return ok;
}
} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUTPUT_FOLDER\n", argv[0]);
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(folder);

    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QPalette light = QApplication::style()->standardPalette();

    bool ok = true;
    QApplication::setPalette(light);
    ok &= shootAll(folder, QStringLiteral("light"));
    QApplication::setPalette(darkPalette());
    ok &= shootAll(folder, QStringLiteral("dark"));
    ok &= saveIcons(folder + QStringLiteral("/icons.png"));
    return ok ? 0 : 1;
}
