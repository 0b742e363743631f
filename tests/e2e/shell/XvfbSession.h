#pragma once

#include <QList>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>

// A private X server (Xvfb on a display it picks itself), optionally with a real system tray
// (trayer, an XEmbed tray that runs without a desktop), and the X command-line tools the
// end-to-end checks drive it with. Every process it starts is ended when it is destroyed.
class XvfbSession {
public:
    // One window of the server's tree, as xwininfo reports it.
    struct Window {
        QString id;       // "0x400006"
        QString name;     // WM_NAME, empty when it has none
        QString instance; // first part of WM_CLASS (the program's file name for Qt programs)
        int depth = 0;    // 1 for children of the root window
        int width = 0;
        int height = 0;
        int x = 0; // absolute position
        int y = 0;
        QString ancestorName; // WM_NAME of the nearest named ancestor below the root
    };

    XvfbSession();
    ~XvfbSession();

    // The tools needed, missing from PATH (empty when all are there).
    static QStringList missingTools(bool withTray);

    // Starts the server and, when asked, the tray. False with a reason in error() on failure.
    bool start(bool withTray);
    QString error() const { return m_error; }
    QString display() const { return m_display; }

    // For programs run on this display: DISPLAY set, the xcb platform, and XDG folders of
    // this session (so a Typolet started here is isolated from the user's own).
    QProcessEnvironment environment() const;

    // Starts `program` on this display; the session ends it at the end if it still runs.
    QProcess* launch(const QString& program, const QStringList& arguments = {});

    // Runs an X tool to completion and returns its standard output.
    QString tool(const QString& program, const QStringList& arguments) const;

    QList<Window> windows() const;
    bool isViewable(const QString& windowId) const;
    // The id of trayer's panel window, empty when there is none.
    QString trayPanel() const;

    void click(int x, int y) const;
    void key(const QString& keys) const;

    QString configFolder() const { return m_home.filePath(QStringLiteral("config")); }

private:
    bool startOnce(bool withTray);
    void stop(QProcess& process);

    QTemporaryDir m_home;
    QString m_display;
    QString m_error;
    std::unique_ptr<QProcess> m_server;
    std::unique_ptr<QProcess> m_tray;
    QList<QProcess*> m_launched;
};
