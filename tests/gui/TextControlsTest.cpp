// The shared controls: the multi-line editor and the single-line field.
#include "CustomTextEditor.h"
#include "FocusableTextField.h"
#include "GuiTestSupport.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

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
        // Undo and redo.
        QTest::keyClicks(&editor, QStringLiteral("!"));
        QCOMPARE(editor.text(), QStringLiteral("bold and italic!"));
        QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(editor.text() != QStringLiteral("bold and italic!"));
        QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(editor.text(), QStringLiteral("bold and italic!"));
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

    void fieldReportsEditingBeginAndEnd() {
        QWidget window;
        auto* layout = new QVBoxLayout(&window);
        auto* field = new FocusableTextField(QStringLiteral("Name"), &window);
        auto* other = new QPushButton(QStringLiteral("elsewhere"), &window);
        layout->addWidget(field);
        layout->addWidget(other);
        window.show();
        QVERIFY(GuiInput::waitActive(&window));
        other->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(other->hasFocus());
        QSignalSpy spy(field, &FocusableTextField::editingChanged);
        const auto reports = [&spy] {
            QList<bool> all;
            for (const QList<QVariant>& arguments : spy)
                all << arguments.at(0).toBool();
            return all;
        };
        QTest::mouseClick(field, Qt::LeftButton);
        QTRY_COMPARE(reports(), QList<bool>{true});
        QTest::mouseClick(field, Qt::LeftButton); // a second click is not a second start
        QTest::keyClicks(field, QStringLiteral("ab"));
        QCOMPARE(field->text(), QStringLiteral("ab"));
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(reports(), (QList<bool>{true, false}));
        QTest::keyClicks(field, QStringLiteral("c"));
        QCOMPARE(reports(), (QList<bool>{true, false, true}));
        other->setFocus(Qt::TabFocusReason);
        QTRY_COMPARE(reports(), (QList<bool>{true, false, true, false}));
    }
};

QTEST_MAIN(TextControlsTest)
#include "TextControlsTest.moc"
