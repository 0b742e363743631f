#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>
#include <functional>
#include <memory>
#include <utility>

// One private X server (Xvfb on a display number it picks itself) with the processes a test
// starts on it: Typolet, target clients, xdotool. Every process is ended when the session is
// destroyed, also when a test fails halfway. Each session has its own temporary folder, used
// as XDG_CONFIG_HOME, so Typolet reads the snippets the test wrote and nothing else.
class XSession {
public:
    explicit XSession(QStringList serverArguments = {});
    ~XSession();
    XSession(const XSession&) = delete;
    XSession& operator=(const XSession&) = delete;

    bool isRunning() const { return !m_display.isEmpty(); }
    QString display() const { return m_display; }
    QString folder() const { return m_dir.path(); }
    QString file(const QString& name) const { return m_dir.filePath(name); }

    // Writes the snippets (command, content) where Typolet will load them; the commands in
    // `waiting` expand only after a word ends.
    void writeSnippets(const QList<std::pair<QString, QString>>& snippets,
                       const QStringList& waiting = {}) const;
    // Writes one preference into the same settings file.
    void writeSetting(const QString& key, const QVariant& value) const;

    // PastingTerminal is a terminal that pastes with Ctrl+Shift+V (LXTerminal); GtkTextView is
    // a GTK 3 multi-line text view whose text is read back whole (GtkTextTarget.py --out).
    enum class Target { Terminal, QtClient, GtkEntry, PastingTerminal, GtkTextView };
    // Writes the snippets, starts Typolet and the target, and focuses the target. False, with
    // what went wrong in log(), when any of it does not come up.
    bool startWith(const QList<std::pair<QString, QString>>& snippets, Target target,
                   const QStringList& waiting = {});
    // What the target shows now; for the GTK entry this ends it (see gtkEntryText()).
    QString shownText();
    // What the target shows once `done` accepts it (a client may lag behind the keys it was
    // sent), or after a minute. The GTK entry is read once, as shownText() does.
    QString shownTextOnce(const std::function<bool(const QString&)>& done);

    // Starts Typolet with typed-key diagnostics on. Waits until it reports a key, so the
    // monitor is known to be listening. False (with Typolet's output in `log()`) otherwise.
    bool startTypolet();
    QProcess* typolet() const { return m_typolet; }
    QString typoletOutput() const;

    // A terminal whose input goes, byte for byte, to `outFile`.
    // `windowClass` gives the terminal that WM_CLASS instead of xterm's own.
    bool startTerminal(const QString& outFile, const QString& windowClass = {});
    // The same with LXTerminal, whose paste keys are Ctrl+Shift+V.
    bool startPastingTerminal(const QString& outFile);
    // Our Qt text client; its whole text is written to `outFile` after each change.
    // `extraArguments` go to the client (the benchmark asks for --report-length).
    bool startQtClient(const QString& outFile, const QStringList& extraArguments = {});
    // A GTK 3 text view that reports when its text reaches a length (see GtkTextTarget.py).
    bool startGtkTextView(const QStringList& arguments);
    // A GTK 3 entry (zenity; `--password` for a password field); its text is read with
    // gtkEntryText().
    bool startGtkEntry(const QStringList& kind = {QStringLiteral("--entry")});
    // Presses Return in the entry and returns the text it held; empty if it did not answer.
    QString gtkEntryText();
    QProcess* target() const { return m_target; }
    // The X window id (as xdotool writes it) of the last started client window.
    QString targetWindow() const { return m_targetWindow; }
    // Gives the keyboard focus to `window`, or to the last started client window.
    bool focus(const QString& window);
    bool focusTarget() { return !m_targetWindow.isEmpty() && focus(m_targetWindow); }
    // Waits until the target shows `expected` (as shownTextOnce() does); empty when it does,
    // else where the text differs and the end of Typolet's output.
    QString mismatch(const QString& expected);

    // Runs the test typist with these arguments (see Typist.cpp) to completion.
    bool typist(const QStringList& arguments);

    // Runs a program to completion (xdotool, setxkbmap) on this display.
    bool run(const QString& program, const QStringList& arguments, int timeoutMs = 30000);
    // Runs an X tool (xwininfo) to completion and returns what it printed.
    QString output(const QString& program, const QStringList& arguments) const;
    // The clipboard's text as xclip reads it; the event loop runs meanwhile, as Typolet may be
    // the one answering.
    QByteArray clipboardText() const;

    // A D-Bus session bus, which brings AT-SPI's accessibility bus, for every program started
    // after it; without it programs run with no session bus. Before startTypolet().
    bool startAccessibilityBus();
    // Set for every program started from now on, over what it is started with.
    void addEnvironment(const QString& entry) { m_environment.append(entry); }

    // Starts a program on this display; the session ends it.
    QProcess* start(const QString& program, const QStringList& arguments,
                    const QStringList& extraEnvironment = {});

    // Waits until `count` expansions have ended and Typolet has written nothing for `quietMs`
    // (it logs every key it handles, so then it has handled everything sent so far).
    bool waitForExpansions(int count, int quietMs = 700);

    // Polls `condition` until it holds or `timeoutMs` passes.
    static bool waitFor(const std::function<bool()>& condition, int timeoutMs = 30000);

    void stopServer();
    QString log() const { return m_log; }

    static QString readText(const QString& path);
    // What a terminal shows for the bytes it was sent: each BackSpace or Delete erases the
    // character before it.
    static QString afterErasing(const QByteArray& bytes);
    // Where `actual` first differs from `expected`, with both around that place.
    static QString describeDifference(const QString& actual, const QString& expected);

private:
    QProcessEnvironment environment(const QStringList& extra) const;
    bool waitForWindow(QProcess* process);

    QTemporaryDir m_dir;
    QString m_display;
    std::unique_ptr<QProcess> m_server;
    std::vector<std::unique_ptr<QProcess>> m_processes;
    QProcess* m_typolet = nullptr;
    QString m_targetWindow;
    Target m_targetKind = Target::Terminal;
    QString m_received;
    QProcess* m_target = nullptr;
    QString m_log;
    QStringList m_environment;
};
