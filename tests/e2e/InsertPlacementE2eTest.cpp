// Where Insert Snippet and the fill-in form open in a real X session: just below the text cursor
// of a GTK text view, as the accessibility bus reports that cursor, and centred on the screen
// when there is no accessibility bus to ask.
#include "XSession.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QRect>
#include <QRegularExpression>
#include <QtTest>

namespace {
// ATSPI_ROLE_TEXT: a GtkTextView.
constexpr uint textRole = 61;
const QString accessible = QStringLiteral("org.a11y.atspi.Accessible");

using ObjectRef = std::pair<QString, QString>; // bus name, path

QList<ObjectRef> childrenOf(QDBusConnection& bus, const ObjectRef& object) {
    const QDBusMessage reply = bus.call(
        QDBusMessage::createMethodCall(object.first, object.second, accessible, "GetChildren"));
    QList<ObjectRef> children;
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return children;
    const auto list = reply.arguments().at(0).value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString name;
        QDBusObjectPath path;
        list.beginStructure();
        list >> name >> path;
        list.endStructure();
        children.append({name, path.path()});
    }
    list.endArray();
    return children;
}

// The first text view under `object`, depth first.
std::optional<ObjectRef> findTextView(QDBusConnection& bus, const ObjectRef& object, int depth) {
    const QDBusReply<uint> role = bus.call(
        QDBusMessage::createMethodCall(object.first, object.second, accessible, "GetRole"));
    if (role.isValid() && role.value() == textRole)
        return object;
    if (depth == 0)
        return std::nullopt;
    for (const ObjectRef& child : childrenOf(bus, object))
        if (const auto found = findTextView(bus, child, depth - 1))
            return found;
    return std::nullopt;
}
} // namespace

class InsertPlacementE2eTest : public QObject {
    Q_OBJECT

    // The frame of Typolet's window named `title` (a pattern) once it shows and has the
    // keyboard focus; empty if it never does.
    static QRect focusedFrame(XSession& session, const QString& title) {
        QString window;
        XSession::waitFor(
            [&] {
                window = session.output("xdotool", {"search", "--onlyvisible", "--name", title})
                             .trimmed();
                return !window.isEmpty() && !window.contains(u'\n') &&
                       session.output("xdotool", {"getwindowfocus"}).trimmed() == window;
            },
            20000);
        if (window.isEmpty())
            return {};
        const QString shell = session.output("xdotool", {"getwindowgeometry", "--shell", window});
        const auto value = [&](const QString& key) {
            return QRegularExpression("^" + key + "=(-?\\d+)$", QRegularExpression::MultilineOption)
                .match(shell)
                .captured(1)
                .toInt();
        };
        return {value("X"), value("Y"), value("WIDTH"), value("HEIGHT")};
    }

    // The text cursor of the session's GTK text view, asked of the accessibility bus the way a
    // screen reader asks it; empty when it does not answer.
    static QRect textCursorOverTheBus(XSession& session) {
        const QString sessionBus =
            session.output("printenv", {"DBUS_SESSION_BUS_ADDRESS"}).trimmed();
        QDBusConnection desktopBus = QDBusConnection::connectToBus(sessionBus, "test-session");
        const QDBusReply<QString> address = desktopBus.call(QDBusMessage::createMethodCall(
            "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"));
        if (!address.isValid())
            return {};
        QDBusConnection bus = QDBusConnection::connectToBus(address.value(), "test-a11y");
        std::optional<ObjectRef> view;
        for (const ObjectRef& application :
             childrenOf(bus, {"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"}))
            if ((view = findTextView(bus, application, 6)))
                break;
        if (!view)
            return {};
        const QDBusReply<QDBusVariant> offset =
            bus.call(QDBusMessage::createMethodCall(view->first, view->second,
                                                    "org.freedesktop.DBus.Properties", "Get")
                     << "org.a11y.atspi.Text"
                     << "CaretOffset");
        if (!offset.isValid())
            return {};
        const QDBusMessage extents =
            bus.call(QDBusMessage::createMethodCall(view->first, view->second,
                                                    "org.a11y.atspi.Text", "GetCharacterExtents")
                     << offset.value().variant().toInt() << uint(0)); // screen coordinates
        const QVariantList box = extents.arguments();
        if (box.size() != 4)
            return {};
        return {box[0].toInt(), box[1].toInt(), std::max(box[2].toInt(), 1), box[3].toInt()};
    }

    static QString describe(const QRect& r) {
        return QStringLiteral("%1,%2 %3x%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
    }

private slots:
    // The insert window, and then the fill-in form of a command typed on the same line.
    void opensBelowTheTextCursor() {
        XSession session;
        QVERIFY(session.isRunning() && session.startAccessibilityBus());
        session.writeSnippets({{";addr", "12 Main Street"}, {";dear", "Dear {{field:Name}}"}});
        QVERIFY2(session.startTypolet(), qPrintable(session.log()));
        // Typolet follows the focus from here on.
        QVERIFY2(XSession::waitFor([&] {
                     return session.typoletOutput().contains(
                         "The text cursor is located through the accessibility bus");
                 }),
                 qPrintable(session.typoletOutput()));
        const QString shown = session.file("shown");
        QVERIFY2(session.startGtkTextView({"--out", shown}), qPrintable(session.log()));
        QVERIFY(session.run("xdotool", {"windowmove", session.targetWindow(), "170", "90"}));
        QVERIFY(session.focusTarget());
        QVERIFY(session.run("xdotool", {"type", "--delay", "15", "Dear Ann,"}));
        QVERIFY(session.run("xdotool", {"key", "Return"}));
        QVERIFY(session.run("xdotool", {"type", "--delay", "15", "thanks for "}));
        QVERIFY(XSession::waitFor(
            [&] { return XSession::readText(shown) == "Dear Ann,\nthanks for "; }));
        QRect cursor = textCursorOverTheBus(session);
        // On the second line of a view that starts at 170,90.
        QVERIFY2(cursor.height() > 0 && cursor.left() > 170 && cursor.top() >= 90 + cursor.height(),
                 qPrintable(describe(cursor)));

        QVERIFY(session.run("xdotool", {"key", "ctrl+alt+period"}));
        QRect frame = focusedFrame(session, "^Insert Snippet$");
        QVERIFY2(!frame.isEmpty(), qPrintable(session.typoletOutput()));
        QCOMPARE(frame.topLeft(), QPoint(cursor.left(), cursor.bottom() + 1 + 4));

        // Escape; further along the line, a command whose content asks for a name.
        QVERIFY(session.run("xdotool", {"key", "Escape"}));
        QVERIFY(XSession::waitFor([&] {
            return session.output("xdotool", {"getwindowfocus"}).trimmed() ==
                   session.targetWindow();
        }));
        QVERIFY(session.run("xdotool", {"type", "--delay", "15", "all; ;dear"}));
        frame = focusedFrame(session, "^Fill In");
        QVERIFY2(!frame.isEmpty(), qPrintable(session.typoletOutput()));
        QVERIFY(XSession::waitFor(
            [&] { return XSession::readText(shown) == "Dear Ann,\nthanks for all; "; }));
        const QRect further = textCursorOverTheBus(session);
        QVERIFY2(further.top() == cursor.top() && further.left() > cursor.left(),
                 qPrintable(describe(further)));
        // Below the same line. The view may not have taken in the keys that erased the command
        // when Typolet asked, so the left edge lies at the cursor or up to the command's width
        // after it; ";dear" is less than twice as wide as the five characters "all; ".
        QCOMPARE(frame.top(), further.bottom() + 1 + 4);
        QVERIFY2(frame.left() >= further.left() &&
                     frame.left() <= further.left() + 2 * (further.left() - cursor.left()),
                 qPrintable(describe(frame) + " under " + describe(further)));
    }

    void opensCentredWithoutAnAccessibilityBus() {
        XSession session;
        QVERIFY2(session.startWith({{";addr", "12 Main Street"}}, XSession::Target::GtkTextView),
                 qPrintable(session.log()));
        QVERIFY(session.run("xdotool", {"type", "--delay", "15", "Dear Ann,"}));
        QVERIFY(XSession::waitFor([&] { return session.shownText() == "Dear Ann,"; }));
        QVERIFY(session.run("xdotool", {"key", "ctrl+alt+period"}));
        const QRect frame = focusedFrame(session, "^Insert Snippet$");
        QVERIFY2(!frame.isEmpty(), qPrintable(session.typoletOutput()));
        const QStringList screen =
            session.output("xdotool", {"getdisplaygeometry"}).split(' ', Qt::SkipEmptyParts);
        QCOMPARE(screen.size(), 2);
        const QPoint centre(screen[0].toInt() / 2, screen[1].trimmed().toInt() / 2);
        QVERIFY2((frame.center() - centre).manhattanLength() <= 2,
                 qPrintable(QStringLiteral("frame centre %1,%2, screen centre %3,%4")
                                .arg(frame.center().x())
                                .arg(frame.center().y())
                                .arg(centre.x())
                                .arg(centre.y())));
    }
};

QTEST_GUILESS_MAIN(InsertPlacementE2eTest)
#include "InsertPlacementE2eTest.moc"
