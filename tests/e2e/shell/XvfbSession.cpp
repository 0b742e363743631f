#include "XvfbSession.h"

#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

namespace {
constexpr int patienceMs = 20000; // generous: other builds may be running
} // namespace

XvfbSession::XvfbSession() {
    QDir(m_home.path()).mkpath(QStringLiteral("config"));
    QDir(m_home.path()).mkpath(QStringLiteral("runtime"));
    QFile::setPermissions(m_home.filePath(QStringLiteral("runtime")),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

XvfbSession::~XvfbSession() {
    for (QProcess* process : std::as_const(m_launched)) {
        stop(*process);
        delete process;
    }
    if (m_tray)
        stop(*m_tray);
    if (m_server)
        stop(*m_server);
}

void XvfbSession::stop(QProcess& process) {
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}

QStringList XvfbSession::missingTools(bool withTray) {
    QStringList tools = {QStringLiteral("Xvfb"), QStringLiteral("xdotool"),
                         QStringLiteral("xwininfo")};
    if (withTray)
        tools << QStringLiteral("trayer");
    QStringList missing;
    for (const QString& tool : std::as_const(tools))
        if (QStandardPaths::findExecutable(tool).isEmpty())
            missing << tool;
    return missing;
}

bool XvfbSession::start(bool withTray) {
    // Other X servers may come and go on this machine while the session starts (parallel test
    // runs); a start that lost its server is tried again on a fresh one.
    for (int attempt = 1; attempt <= 3; ++attempt) {
        if (startOnce(withTray))
            return true;
        qWarning("X session start failed (attempt %d): %s", attempt, qPrintable(m_error));
        if (m_tray)
            stop(*m_tray);
        if (m_server)
            stop(*m_server);
    }
    return false;
}

bool XvfbSession::startOnce(bool withTray) {
    m_server = std::make_unique<QProcess>();
    // -displayfd: the server picks a free display and writes its number once it accepts
    // clients, so there is neither a race for a display number nor a guessed start-up delay.
    // -noreset: no reset (and no refused connections) when the last client leaves.
    m_server->start(QStringLiteral("Xvfb"),
                    {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-noreset"),
                     QStringLiteral("-nolisten"),
                     QStringLiteral("tcp"), QStringLiteral("-screen"), QStringLiteral("0"),
                     QStringLiteral("1280x800x24")});
    if (!m_server->waitForStarted(patienceMs)) {
        m_error = QStringLiteral("Xvfb did not start");
        return false;
    }
    while (!m_server->canReadLine()) {
        if (!m_server->waitForReadyRead(patienceMs)) {
            m_error = QStringLiteral("Xvfb did not report a display: ") +
                      QString::fromLocal8Bit(m_server->readAllStandardError());
            return false;
        }
    }
    m_display = u':' + QString::fromLatin1(m_server->readLine().trimmed());

    if (!withTray)
        return true;
    m_tray = std::make_unique<QProcess>();
    m_tray->setProcessEnvironment(environment());
    m_tray->start(QStringLiteral("trayer"), {QStringLiteral("--edge"), QStringLiteral("top"),
                                             QStringLiteral("--align"), QStringLiteral("right")});
    if (!m_tray->waitForStarted(patienceMs)) {
        m_error = QStringLiteral("trayer did not start");
        return false;
    }
    if (!QTest::qWaitFor([this] { return !trayPanel().isEmpty(); }, patienceMs)) {
        m_error =
            QStringLiteral("trayer's panel did not appear on %1 (Xvfb %5, trayer %2, "
                           "exit %3): %4")
                .arg(m_display, m_tray->state() == QProcess::Running ? QStringLiteral("running")
                                                                     : QStringLiteral("ended"))
                .arg(m_tray->exitCode())
                .arg(QString::fromLocal8Bit(m_tray->readAllStandardError() +
                                            m_tray->readAllStandardOutput()))
                .arg(m_server->state() == QProcess::Running
                         ? QStringLiteral("running")
                         : QStringLiteral("ended: ") +
                               QString::fromLocal8Bit(m_server->readAllStandardError()));
        return false;
    }
    return true;
}

QProcessEnvironment XvfbSession::environment() const {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DISPLAY"), m_display);
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), configFolder());
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.filePath(QStringLiteral("runtime")));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    env.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")); // no desktop's tray over D-Bus
    return env;
}

QProcess* XvfbSession::launch(const QString& program, const QStringList& arguments) {
    auto* process = new QProcess;
    process->setProcessEnvironment(environment());
    process->start(program, arguments);
    m_launched.append(process);
    return process;
}

QString XvfbSession::tool(const QString& program, const QStringList& arguments) const {
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(program, arguments);
    if (!process.waitForFinished(patienceMs))
        return {};
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

QList<XvfbSession::Window> XvfbSession::windows() const {
    // Lines look like:
    //      0x400006 "Typolet": ("typolet" "Typolet")  1100x700+0+0  +0+0
    //         0x200026 (has no name): ()  22x24+1257+1  +1257+1
    static const QRegularExpression line(QStringLiteral(
        R"re(^(\s+)(0x[0-9a-f]+) (?:"(.*)"|\(has no name\)): \((?:"([^"]*)"[^)]*)?\)\s+)re"
        R"re((\d+)x(\d+)[+-]-?\d+[+-]-?\d+\s+\+?(-?\d+)\+?(-?\d+)\s*$)re"));
    QList<Window> result;
    QList<QString> namedAncestors; // by depth
    const QStringList lines =
        tool(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-tree")})
            .split(u'\n');
    for (const QString& text : lines) {
        const QRegularExpressionMatch m = line.match(text);
        if (!m.hasMatch())
            continue;
        Window w;
        // The root's children are indented by five spaces, each level by three more.
        w.depth = static_cast<int>((m.capturedLength(1) - 5) / 3 + 1);
        w.id = m.captured(2);
        w.name = m.captured(3);
        w.instance = m.captured(4);
        w.width = m.captured(5).toInt();
        w.height = m.captured(6).toInt();
        w.x = m.captured(7).toInt();
        w.y = m.captured(8).toInt();
        namedAncestors.resize(w.depth);
        for (int d = w.depth - 2; d >= 0; --d) {
            if (!namedAncestors[d].isEmpty()) {
                w.ancestorName = namedAncestors[d];
                break;
            }
        }
        namedAncestors[w.depth - 1] = w.name;
        result.append(w);
    }
    return result;
}

bool XvfbSession::isViewable(const QString& windowId) const {
    return tool(QStringLiteral("xwininfo"), {QStringLiteral("-id"), windowId})
        .contains(QStringLiteral("Map State: IsViewable"));
}

QString XvfbSession::trayPanel() const {
    const QList<Window> all = windows();
    for (const Window& w : all)
        if (w.depth == 1 && w.name == QLatin1String("panel") &&
            w.instance == QLatin1String("panel"))
            return w.id;
    return {};
}

void XvfbSession::click(int x, int y) const {
    tool(QStringLiteral("xdotool"),
         {QStringLiteral("mousemove"), QString::number(x), QString::number(y),
          QStringLiteral("click"), QStringLiteral("1")});
}

void XvfbSession::key(const QString& keys) const {
    tool(QStringLiteral("xdotool"), QStringList{QStringLiteral("key")} + keys.split(u' '));
}
