// The content editor: plain text, and every character kept.
#include "CustomTextEditor.h"
#include "GuiTestSupport.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

class TextControlsTest : public QObject {
    Q_OBJECT

private slots:
    void editor() {
        CustomTextEditor editor;
        editor.resize(200, 120);
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
        QSignalSpy edited(&editor, &CustomTextEditor::textEdited);
        // Giving it the text it shows keeps the selection; a new text replaces all. Neither is
        // a user edit.
        editor.setText(QStringLiteral("Hello world"));
        QTextCursor cursor = editor.textCursor();
        cursor.setPosition(3);
        cursor.setPosition(7, QTextCursor::KeepAnchor);
        editor.setTextCursor(cursor);
        editor.setText(QStringLiteral("Hello world"));
        QCOMPARE(editor.textCursor().anchor(), 3);
        QCOMPARE(editor.textCursor().position(), 7);
        editor.setText(QString());
        QVERIFY(editor.text().isEmpty());
        QCOMPARE(edited.size(), 0);
        // Pasting styled text inserts it plain.
        auto* data = new QMimeData();
        data->setHtml(QStringLiteral("<b>bold</b> and <i>italic</i>"));
        data->setText(QStringLiteral("bold and italic"));
        QApplication::clipboard()->setMimeData(data);
        editor.paste();
        QCOMPARE(editor.text(), QStringLiteral("bold and italic"));
        QVERIFY(!editor.document()->toHtml().contains(QStringLiteral("font-weight:700")));
        QCOMPARE(edited.last().at(0).toString(), QStringLiteral("bold and italic"));
    }

    // Every character survives: as set, and after an edit at the end.
    void editorKeepsEveryCharacter_data() {
        QTest::addColumn<QString>("content");
        QTest::newRow("no-break space, line separator, tab")
            << QStringLiteral("a\u00A0b\u2028c\td\ne");
        QTest::newRow("CR LF") << QStringLiteral("Dear Sir,\r\n\r\nregards\r\n");
        QTest::newRow("CR") << QStringLiteral("one\rtwo");
        QTest::newRow("paragraph separator") << QStringLiteral("one\u2029two");
    }
    void editorKeepsEveryCharacter() {
        QFETCH(QString, content);
        CustomTextEditor editor;
        editor.setText(content);
        QCOMPARE(editor.text(), content);
        editor.moveCursor(QTextCursor::End);
        QTest::keyClicks(&editor, QStringLiteral("x"));
        QCOMPARE(editor.text(), content + QStringLiteral("x"));
    }
};

QTEST_MAIN(TextControlsTest)
#include "TextControlsTest.moc"
