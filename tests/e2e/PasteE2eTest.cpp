// Long contents pasted through the clipboard into real X clients under Xvfb, and the clipboard
// that the user had before (held by xclip) reading back the same afterwards.
#include "XSession.h"

#include <QFile>
#include <QRandomGenerator>
#include <QtTest>

namespace {
QString longText(bool lineBreaks) {
    QString text;
    for (int i = 0; text.size() < 600; ++i)
        text += QStringLiteral("Line %1 of a long signature, with ümlauts — and more.%2")
                    .arg(i)
                    .arg(lineBreaks ? QStringLiteral("\n") : QStringLiteral(" "));
    return text;
}
} // namespace

class PasteE2eTest : public QObject {
    Q_OBJECT

    // Puts `bytes` on the clipboard as `type`, served by xclip until another program owns it.
    static bool putOnClipboard(XSession& session, const QByteArray& bytes, const QString& type) {
        const QString path = session.file(QStringLiteral("clipboard-before"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            return false;
        file.close();
        session.start(QStringLiteral("xclip"), {"-quiet", "-selection", "clipboard", "-t", type,
                                                "-i", path});
        return XSession::waitFor([&] { return clipboard(session, type) == bytes; });
    }

    static QByteArray clipboard(XSession& session, const QString& type) {
        QProcess xclip;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), session.display());
        xclip.setProcessEnvironment(env);
        xclip.start(QStringLiteral("xclip"), {"-selection", "clipboard", "-o", "-t", type});
        // The event loop runs meanwhile: Typolet may be the one answering.
        XSession::waitFor([&] { return xclip.state() == QProcess::NotRunning; }, 10000);
        return xclip.readAllStandardOutput();
    }

private slots:
    // A long content arrives whole in a GTK field, a Qt field and a terminal that pastes with
    // Ctrl+Shift+V; the text or image the clipboard held before is there again afterwards.
    void longContentIsPastedAndTheClipboardComesBack_data() {
        QTest::addColumn<XSession::Target>("target");
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("clipboardType");
        QTest::addColumn<QByteArray>("clipboardBytes");

        // Larger than one X request, so it travels in increments both ways.
        QByteArray image("\x89PNG\r\n\x1a\n", 8);
        for (int i = 0; i < 400 * 1024 / 4; ++i) {
            const quint32 word = QRandomGenerator::global()->generate();
            image.append(reinterpret_cast<const char*>(&word), 4);
        }
        const QByteArray text = QStringLiteral("copied earlier: naïve").toUtf8();
        QTest::newRow("GTK entry") << XSession::Target::GtkEntry << longText(false)
                                   << "Ctrl+V" << "UTF8_STRING" << text;
        QTest::newRow("Qt client, image") << XSession::Target::QtClient << longText(true)
                                          << "Ctrl+V" << "image/png" << image;
        QTest::newRow("LXTerminal") << XSession::Target::PastingTerminal << longText(true)
                                    << "Ctrl+Shift+V" << "UTF8_STRING" << text;
    }
    void longContentIsPastedAndTheClipboardComesBack() {
        QFETCH(XSession::Target, target);
        QFETCH(QString, content);
        QFETCH(QString, keys);
        QFETCH(QString, clipboardType);
        QFETCH(QByteArray, clipboardBytes);
        XSession session;
        QVERIFY(session.isRunning());
        QVERIFY(putOnClipboard(session, clipboardBytes, clipboardType));
        QVERIFY2(session.startWith({{";long", content}}, target), qPrintable(session.log()));
        // The second time Typolet itself holds the clipboard it gave back.
        // xdotool types through the same XTEST keyboard as Typolet, whose keys Typolet cannot
        // hold: the second command waits until the first one is done.
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "15", "x;long"}));
        QVERIFY(session.waitForExpansions(1));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "15", " ;long"}));
        QVERIFY(session.waitForExpansions(2));
        const QString mismatch = session.mismatch("x" + content + " " + content);
        QVERIFY2(mismatch.isEmpty(), qPrintable(mismatch));
        QVERIFY2(session.typoletOutput().count("Pasting with " + keys) == 2,
                 qPrintable(session.typoletOutput().right(1500)));
        QCOMPARE(clipboard(session, clipboardType), clipboardBytes);
    }

    // A clipboard manager that copies every new content and then owns the clipboard itself:
    // after the paste the clipboard holds what the user had copied, not the snippet.
    void theClipboardComesBackPastAClipboardManager() {
        XSession session;
        QVERIFY(session.isRunning());
        QProcess* manager = session.start(QStringLiteral(TYPOLET_CLIPBOARD_MANAGER), {});
        QVERIFY(XSession::waitFor([&] { return manager->canReadLine(); }));
        const QByteArray before = QStringLiteral("copied earlier: naïve").toUtf8();
        QVERIFY(putOnClipboard(session, before, QStringLiteral("UTF8_STRING")));
        const QString content = longText(false);
        QVERIFY2(session.startWith({{";long", content}}, XSession::Target::QtClient),
                 qPrintable(session.log()));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "15", ";long"}));
        QVERIFY(session.waitForExpansions(1));
        const QString mismatch = session.mismatch(content);
        QVERIFY2(mismatch.isEmpty(), qPrintable(mismatch));
        QVERIFY2(XSession::waitFor([&] { return clipboard(session, "UTF8_STRING") == before; }),
                 qPrintable(QString::fromUtf8(clipboard(session, "UTF8_STRING")).left(80) +
                            QStringLiteral("\nTypolet: ") + session.typoletOutput().right(1500)));
    }

    // xterm has no keys that paste the clipboard: the content is typed there, exactly, and an
    // empty clipboard stays empty.
    void xtermIsTypedTo() {
        XSession session;
        const QString content = longText(true);
        QVERIFY2(session.startWith({{";long", content}}, XSession::Target::Terminal),
                 qPrintable(session.log()));
        QVERIFY(session.run(QStringLiteral("xdotool"), {"type", "--delay", "15", ";long"}));
        const QString mismatch = session.mismatch(content);
        QVERIFY2(mismatch.isEmpty(), qPrintable(mismatch));
        QVERIFY(session.typoletOutput().contains("the application has no paste keys"));
        QVERIFY(!session.typoletOutput().contains("Pasting with"));
        QCOMPARE(session.output(QStringLiteral("xclip"), {"-selection", "clipboard", "-o"}),
                 QString());
    }
};

QTEST_GUILESS_MAIN(PasteE2eTest)
#include "PasteE2eTest.moc"
