#include "XSession.h"

#include "RecordCodec.h"
#include "Snippet.h"
#include "SnippetStore.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSettings>
#include <QThread>

#ifndef TYPOLET_EXECUTABLE
#error "TYPOLET_EXECUTABLE must name the built typolet program"
#endif

XSession::XSession(QStringList serverArguments) {
    m_server = std::make_unique<QProcess>();
    // -displayfd 1: the server picks a free display number and writes it to its stdout.
    // -noreset: by default the server resets whenever its last client leaves and refuses
    // connections meanwhile; a test's short-lived clients (xdotool, the display probe) would
    // make the next client's connection fail now and then.
    QStringList arguments{QStringLiteral("-displayfd"), QStringLiteral("1"),
                          QStringLiteral("-noreset"),
                          QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                          QStringLiteral("-screen"), QStringLiteral("0"),
                          QStringLiteral("1280x1024x24")};
    arguments += serverArguments;
    m_server->setProcessChannelMode(QProcess::SeparateChannels);
    m_server->start(QStringLiteral("Xvfb"), arguments);
    if (!m_server->waitForStarted(10000))
        return;
    QByteArray number;
    waitFor([&] {
        number += m_server->readAllStandardOutput();
        return number.contains('\n') || m_server->state() == QProcess::NotRunning;
    }, 30000);
    if (number.trimmed().isEmpty())
        return;
    m_display = QLatin1Char(':') + QString::fromLatin1(number.trimmed());
}

XSession::~XSession() {
    // Clients first, while the server still runs, so they leave cleanly.
    for (auto it = m_processes.rbegin(); it != m_processes.rend(); ++it) {
        QProcess* process = it->get();
        if (process->state() == QProcess::NotRunning)
            continue;
        process->terminate();
        if (!process->waitForFinished(3000)) {
            process->kill();
            process->waitForFinished(3000);
        }
    }
    m_processes.clear();
    stopServer();
}

void XSession::stopServer() {
    if (!m_server || m_server->state() == QProcess::NotRunning)
        return;
    m_server->terminate();
    if (!m_server->waitForFinished(5000)) {
        m_server->kill();
        m_server->waitForFinished(5000);
    }
}

QProcessEnvironment XSession::environment(const QStringList& extra) const {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DISPLAY"), m_display);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_dir.path());
    env.insert(QStringLiteral("XDG_CACHE_HOME"), m_dir.filePath(QStringLiteral("cache")));
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    env.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("x11")); // Typolet picks X11
    env.remove(QStringLiteral("XAUTHORITY"));
    // No desktop's tray over D-Bus: a tray icon goes to the session's own XEmbed tray.
    env.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    env.remove(QStringLiteral("AT_SPI_BUS_ADDRESS"));
    for (const QString& entry : extra + m_environment) {
        const qsizetype eq = entry.indexOf(QLatin1Char('='));
        env.insert(entry.left(eq), entry.mid(eq + 1));
    }
    return env;
}

QProcess* XSession::start(const QString& program, const QStringList& arguments,
                          const QStringList& extraEnvironment) {
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment(extraEnvironment));
    process->setProcessChannelMode(QProcess::SeparateChannels);
    process->start(program, arguments);
    QProcess* raw = process.get();
    m_processes.push_back(std::move(process));
    raw->waitForStarted(10000);
    return raw;
}

bool XSession::startAccessibilityBus() {
    QProcess* bus = start(QStringLiteral("dbus-daemon"),
                          {QStringLiteral("--session"), QStringLiteral("--nofork"),
                           QStringLiteral("--print-address=1")});
    QByteArray address;
    waitFor([&] {
        address += bus->readAllStandardOutput();
        return address.contains('\n') || bus->state() == QProcess::NotRunning;
    });
    if (!address.contains('\n')) {
        m_log += QStringLiteral("dbus-daemon did not start: ") + bus->errorString() +
                 QString::fromUtf8(bus->readAllStandardError()) + QLatin1Char('\n');
        return false;
    }
    // AT-SPI's bus launcher (and through it the accessibility bus and its registry) is started
    // by this bus at the first question, and ends with it. GTK talks to it unless told not to.
    m_environment += {QStringLiteral("DBUS_SESSION_BUS_ADDRESS=") +
                          QString::fromUtf8(address.trimmed()),
                      QStringLiteral("NO_AT_BRIDGE=0")};
    return true;
}

QString XSession::output(const QString& program, const QStringList& arguments) const {
    QProcess process;
    process.setProcessEnvironment(environment({}));
    process.start(program, arguments);
    process.waitForFinished(30000);
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

QByteArray XSession::clipboardText() const {
    QProcess xclip;
    xclip.setProcessEnvironment(environment({}));
    xclip.start(QStringLiteral("xclip"), {"-selection", "clipboard", "-o"});
    waitFor([&] { return xclip.state() == QProcess::NotRunning; }, 10000);
    return xclip.readAllStandardOutput();
}

bool XSession::run(const QString& program, const QStringList& arguments, int timeoutMs) {
    QProcess process;
    process.setProcessEnvironment(environment({}));
    process.start(program, arguments);
    // The event loop runs meanwhile, so Typolet's output keeps being read: a full pipe would
    // stall Typolet while the program types.
    if (!process.waitForStarted(10000) ||
        !waitFor([&] { return process.state() == QProcess::NotRunning; }, timeoutMs)) {
        process.kill();
        process.waitForFinished(3000);
        m_log += program + QStringLiteral(" did not finish\n");
        return false;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        m_log += program + QLatin1Char(' ') + arguments.join(QLatin1Char(' ')) +
                 QStringLiteral(" failed: ") + QString::fromUtf8(process.readAllStandardError()) +
                 QLatin1Char('\n');
        return false;
    }
    return true;
}

bool XSession::waitFor(const std::function<bool()>& condition, int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(20);
        // Lets the QProcess objects read what their programs wrote.
        QCoreApplication::processEvents();
    }
    return true;
}

void XSession::writeSnippets(const QList<std::pair<QString, QString>>& snippets,
                             const QStringList& waiting) const {
    QList<Snippet> records;
    QJsonArray waitingIds;
    for (const auto& [command, content] : snippets) {
        records.append(Snippet::create(command, content, QUuid()));
        if (waiting.contains(command))
            waitingIds.append(records.last().id.toString(QUuid::WithoutBraces));
    }
    QDir().mkpath(m_dir.filePath(QStringLiteral("Typolet")));
    QSettings settings(m_dir.filePath(QStringLiteral("Typolet/Typolet.conf")),
                       QSettings::NativeFormat);
    settings.setValue(QStringLiteral("Shortcuts"), *RecordCodec::encodeSnippets(records));
    settings.setValue(QLatin1String(SnippetStore::afterWordEndKey), QJsonDocument(waitingIds).toJson());
    settings.sync();
}

void XSession::writeSetting(const QString& key, const QVariant& value) const {
    QDir().mkpath(m_dir.filePath(QStringLiteral("Typolet")));
    QSettings(m_dir.filePath(QStringLiteral("Typolet/Typolet.conf")), QSettings::NativeFormat)
        .setValue(key, value);
}

QString XSession::typoletOutput() const {
    if (!m_typolet)
        return {};
    // The pipes are read by the event loop; a test that found its text at the first look
    // has not run it since.
    QCoreApplication::processEvents();
    // Read without consuming: keep everything seen so far in a property.
    QByteArray seen = m_typolet->property("seen").toByteArray();
    seen += m_typolet->readAllStandardOutput() + m_typolet->readAllStandardError();
    m_typolet->setProperty("seen", seen);
    return QString::fromUtf8(seen);
}

bool XSession::startTypolet() {
    m_typolet = start(QStringLiteral(TYPOLET_EXECUTABLE), {},
                      {QStringLiteral("TYPOLET_DIAGNOSTICS=1")});
    // Nothing has the focus yet, so Escape reaches no application; it only shows that
    // Typolet sees keys.
    const bool listening = waitFor([&] {
        if (m_typolet->state() == QProcess::NotRunning)
            return true;
        run(QStringLiteral("xdotool"), {QStringLiteral("key"), QStringLiteral("Escape")});
        return waitFor([&] { return typoletOutput().contains(QLatin1String("Key down")); },
                       300);
    }, 60000);
    if (!listening || m_typolet->state() == QProcess::NotRunning) {
        const bool running = m_typolet->state() != QProcess::NotRunning;
        m_log += QStringLiteral("Typolet did not start listening (%1):\n")
                     .arg(running ? QStringLiteral("still running")
                                  : QStringLiteral("ended, status %1, exit %2")
                                        .arg(m_typolet->exitStatus())
                                        .arg(m_typolet->exitCode())) +
                 typoletOutput() + QString::fromUtf8(m_typolet->readAllStandardError());
        return false;
    }
    return true;
}

bool XSession::waitForWindow(QProcess* process) {
    QString found;
    const bool ok = waitFor([&] {
        if (process->state() == QProcess::NotRunning)
            return true;
        QProcess search;
        search.setProcessEnvironment(environment({}));
        search.start(QStringLiteral("xdotool"),
                     {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                      QStringLiteral("--pid"), QString::number(process->processId())});
        search.waitForFinished(10000);
        found = QString::fromLatin1(search.readAllStandardOutput()).split(QLatin1Char('\n'),
                                                                           Qt::SkipEmptyParts).value(0);
        return !found.isEmpty();
    }, 30000);
    if (!ok || found.isEmpty()) {
        m_log += QStringLiteral("No window appeared: ") +
                 QString::fromUtf8(process->readAllStandardError()) + QLatin1Char('\n');
        return false;
    }
    m_targetWindow = found;
    return true;
}

bool XSession::startTerminal(const QString& outFile, const QString& windowClass) {
    const QString ready = outFile + QStringLiteral(".ready");
    // No line editing and no echo: every byte the terminal sends lands in the file as sent.
    const QString script = QStringLiteral("stty -icanon -echo -ixon iutf8 && touch '%1' && exec cat > '%2'")
                               .arg(ready, outFile);
    const QStringList classArguments =
        windowClass.isEmpty() ? QStringList() : QStringList{QStringLiteral("-class"), windowClass};
    QProcess* terminal = start(QStringLiteral("xterm"),
                               classArguments + QStringList{QStringLiteral("-u8"), QStringLiteral("-geometry"),
                                QStringLiteral("100x30+0+0"), QStringLiteral("-e"),
                                QStringLiteral("sh"), QStringLiteral("-c"), script});
    m_target = terminal;
    if (!waitForWindow(terminal))
        return false;
    return waitFor([&] { return QFile::exists(ready); });
}

bool XSession::startPastingTerminal(const QString& outFile) {
    const QString ready = outFile + QStringLiteral(".ready");
    const QString script =
        QStringLiteral("sh -c 'stty -icanon -echo -ixon iutf8 && touch %1 && exec cat > %2'")
            .arg(ready, outFile);
    m_target = start(QStringLiteral("lxterminal"),
                     {QStringLiteral("--no-remote"), QStringLiteral("-e"), script},
                     {QStringLiteral("NO_AT_BRIDGE=1")});
    if (!waitForWindow(m_target))
        return false;
    return waitFor([&] { return QFile::exists(ready); });
}

bool XSession::startQtClient(const QString& outFile, const QStringList& extraArguments) {
    QProcess* client = start(QStringLiteral(TYPOLET_QT_TARGET), QStringList{outFile} + extraArguments,
                             {QStringLiteral("QT_QPA_PLATFORM=xcb")});
    m_target = client;
    if (!waitForWindow(client))
        return false;
    return waitFor([&] { return QFile::exists(outFile); });
}

bool XSession::startWith(const QList<std::pair<QString, QString>>& snippets, Target target,
                         const QStringList& waiting) {
    if (!isRunning()) {
        m_log += QStringLiteral("Xvfb did not start\n");
        return false;
    }
    writeSnippets(snippets, waiting);
    if (!startTypolet())
        return false;
    m_targetKind = target;
    m_received = file(QStringLiteral("received"));
    bool started = false;
    switch (target) {
    case Target::Terminal:
        started = startTerminal(m_received);
        break;
    case Target::QtClient:
        started = startQtClient(m_received);
        break;
    case Target::GtkEntry:
        started = startGtkEntry();
        break;
    case Target::PastingTerminal:
        started = startPastingTerminal(m_received);
        break;
    case Target::GtkTextView:
        started = startGtkTextView({QStringLiteral("--out"), m_received}) &&
                  waitFor([&] { return QFile::exists(m_received); });
        break;
    }
    return started && focusTarget();
}

QString XSession::shownText() {
    if (m_targetKind == Target::GtkEntry)
        return gtkEntryText();
    QFile file(m_received);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    return m_targetKind == Target::QtClient || m_targetKind == Target::GtkTextView
               ? QString::fromUtf8(bytes)
               : afterErasing(bytes);
}

QString XSession::shownTextOnce(const std::function<bool(const QString&)>& done) {
    if (m_targetKind == Target::GtkEntry)
        return gtkEntryText();
    QString text;
    waitFor([&] {
        text = shownText();
        return done(text);
    }, 60000);
    return text;
}

bool XSession::waitForExpansions(int count, int quietMs) {
    qsizetype seen = -1;
    QDeadlineTimer quiet(quietMs);
    return waitFor([&] {
        const QString output = typoletOutput();
        if (output.size() != seen) {
            seen = output.size();
            quiet.setRemainingTime(quietMs);
        }
        return quiet.hasExpired() && output.count(QLatin1String("Expansion done")) >= count;
    }, 120000);
}

bool XSession::startGtkTextView(const QStringList& arguments) {
    m_target = start(QStringLiteral("/usr/bin/python3"),
                     QStringList{QStringLiteral(TYPOLET_GTK_TEXT_TARGET)} + arguments,
                     {QStringLiteral("GDK_BACKEND=x11"), QStringLiteral("NO_AT_BRIDGE=1")});
    return waitForWindow(m_target);
}

bool XSession::startGtkEntry(const QStringList& kind) {
    m_target = start(QStringLiteral("zenity"),
                     kind + QStringList{QStringLiteral("--title=GTK target"),
                                        QStringLiteral("--width=900")},
                     {QStringLiteral("GDK_BACKEND=x11"), QStringLiteral("NO_AT_BRIDGE=1")});
    return waitForWindow(m_target);
}

QString XSession::gtkEntryText() {
    if (!m_target || !typist({QStringLiteral("key:Return")}) || !m_target->waitForFinished(30000))
        return {};
    QString text = QString::fromUtf8(m_target->readAllStandardOutput());
    if (text.endsWith(QLatin1Char('\n')))
        text.chop(1); // zenity ends the text with a line feed
    return text;
}

bool XSession::typist(const QStringList& arguments) {
    return run(QStringLiteral(TYPOLET_TYPIST), arguments, 120000);
}

bool XSession::focus(const QString& window) {
    return run(QStringLiteral("xdotool"), {QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
}

QString XSession::mismatch(const QString& expected) {
    const QString shown = shownTextOnce([&](const QString& text) { return text == expected; });
    return shown == expected ? QString()
                             : describeDifference(shown, expected) + QStringLiteral("\nTypolet: ") +
                                   typoletOutput().right(800);
}

QString XSession::readText(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

QString XSession::describeDifference(const QString& actual, const QString& expected) {
    qsizetype at = 0;
    while (at < actual.size() && at < expected.size() && actual[at] == expected[at])
        ++at;
    return QStringLiteral("%1 characters, expected %2; first difference at %3:\n  shown    "
                          "\"%4\"\n  expected \"%5\"")
        .arg(actual.size())
        .arg(expected.size())
        .arg(at)
        .arg(actual.mid(std::max<qsizetype>(0, at - 30), 60),
             expected.mid(std::max<qsizetype>(0, at - 30), 60));
}

QString XSession::afterErasing(const QByteArray& bytes) {
    QString shown;
    for (const QChar c : QString::fromUtf8(bytes)) {
        if (c == QChar(0x7F) || c == QChar(0x08)) {
            if (shown.isEmpty())
                continue;
            // One character: a whole surrogate pair when that is what ends the text.
            const bool pair = shown.size() >= 2 && shown.back().isLowSurrogate() &&
                              shown.at(shown.size() - 2).isHighSurrogate();
            shown.chop(pair ? 2 : 1);
        } else {
            shown.append(c);
        }
    }
    return shown;
}
