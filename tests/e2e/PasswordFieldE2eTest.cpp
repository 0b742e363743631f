// Password fields told apart through the accessibility bus: a real GTK password dialog, then a
// real GTK entry.
#include "XSession.h"

#include <QRegularExpression>
#include <QtTest>

class PasswordFieldE2eTest : public QObject {
    Q_OBJECT

private slots:
    void passwordFieldKeepsTheCommandAndAPlainFieldExpands() {
        const QString command = QStringLiteral(";pw"), content = QStringLiteral("Expanded");
        XSession session;
        QVERIFY(session.isRunning() && session.startAccessibilityBus());
        session.addEnvironment(QStringLiteral("QT_LOGGING_RULES=typolet.engine.debug=true"));
        session.writeSnippets({{command, content}});
        QVERIFY2(session.startTypolet(), qPrintable(session.log()));
        const auto appears = [&](const QString& line, qsizetype from) {
            return XSession::waitFor(
                [&] { return session.typoletOutput().indexOf(line, from) >= 0; });
        };

        QVERIFY2(appears(QStringLiteral("recognised through the accessibility bus"), 0),
                 qPrintable(session.typoletOutput()));
        const qsizetype passwordFrom = session.typoletOutput().size();
        QVERIFY2(session.startGtkEntry({QStringLiteral("--password")}) && session.focusTarget(),
                 qPrintable(session.log()));
        QVERIFY2(appears(QStringLiteral("Focus: a password field"), passwordFrom),
                 qPrintable(session.typoletOutput()));
        const qsizetype typedFrom = session.typoletOutput().size();
        QVERIFY(session.run(QStringLiteral("xdotool"), {QStringLiteral("type"), command}));
        QCOMPARE(session.gtkEntryText(), command);
        // The keys were seen, and no line tells which: no key code, no text.
        const QString typedThere = session.typoletOutput().mid(typedFrom);
        QVERIFY2(typedThere.contains(QStringLiteral("Key down")) &&
                     !typedThere.contains(QRegularExpression(QStringLiteral("[;\\d]"))),
                 qPrintable(typedThere));

        const qsizetype plainFrom = session.typoletOutput().size();
        QVERIFY2(session.startGtkEntry() && session.focusTarget(), qPrintable(session.log()));
        QVERIFY2(appears(QStringLiteral("Focus: not a password field"), plainFrom),
                 qPrintable(session.typoletOutput()));
        QVERIFY(session.run(QStringLiteral("xdotool"), {QStringLiteral("type"), command}));
        QVERIFY2(session.waitForExpansions(1), qPrintable(session.typoletOutput()));
        QCOMPARE(session.gtkEntryText(), content);
    }
};

QTEST_GUILESS_MAIN(PasswordFieldE2eTest)
#include "PasswordFieldE2eTest.moc"
