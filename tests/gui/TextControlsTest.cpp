// The shared controls: the multi-line editor, the single-line field and the primary button.
#include "CustomTextEditor.h"
#include "FocusableTextField.h"
#include "FormParts.h"
#include "PrimaryButtonStyle.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QVBoxLayout>

class TextControlsTest : public QObject {
    Q_OBJECT

private slots:
    // ---- CustomTextEditor

    void editorPastesPlainText() {
        CustomTextEditor editor;
        QSignalSpy edited(&editor, &CustomTextEditor::textEdited);
        auto* data = new QMimeData();
        data->setHtml(QStringLiteral("<b>bold</b> and <i>italic</i>"));
        data->setText(QStringLiteral("bold and italic"));
        QApplication::clipboard()->setMimeData(data);
        editor.paste();
        QCOMPARE(editor.text(), QStringLiteral("bold and italic"));
        QVERIFY(!editor.document()->toHtml().contains(QStringLiteral("font-weight:700")));
        QVERIFY(!edited.isEmpty());
        QCOMPARE(edited.last().at(0).toString(), QStringLiteral("bold and italic"));
    }

    void editorUndoesAndRedoes() {
        CustomTextEditor editor;
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
        QTest::keyClicks(&editor, QStringLiteral("abc"));
        QCOMPARE(editor.text(), QStringLiteral("abc"));
        QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(editor.text() != QStringLiteral("abc"));
        QTest::keyClick(&editor, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(editor.text(), QStringLiteral("abc"));
    }

    void editorWrapsAndNeverScrollsSideways() {
        CustomTextEditor editor;
        editor.resize(200, 120);
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
        QVERIFY(!editor.verticalScrollBar()->isVisible());
        editor.setText(QStringLiteral("word ").repeated(60) + QString(300, QChar(u'x')));
        QTRY_VERIFY(editor.document()->firstBlock().layout()->lineCount() > 5);
        QCOMPARE(editor.horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        QCOMPARE(editor.horizontalScrollBar()->maximum(), 0);
        // Taller than the editor: now, and only now, the vertical scroller shows.
        QTRY_VERIFY(editor.verticalScrollBar()->isVisible());
        editor.setText(QStringLiteral("short"));
        QTRY_VERIFY(!editor.verticalScrollBar()->isVisible());
    }

    void settingTheSameTextKeepsTheCursor() {
        CustomTextEditor editor;
        QSignalSpy edited(&editor, &CustomTextEditor::textEdited);
        editor.setText(QStringLiteral("Hello world"));
        QCOMPARE(edited.size(), 0); // not a user edit
        QTextCursor cursor = editor.textCursor();
        cursor.setPosition(3);
        cursor.setPosition(7, QTextCursor::KeepAnchor);
        editor.setTextCursor(cursor);
        editor.setText(QStringLiteral("Hello world"));
        QCOMPARE(editor.textCursor().anchor(), 3);
        QCOMPARE(editor.textCursor().position(), 7);
        editor.setText(QStringLiteral("Something else"));
        QCOMPARE(editor.text(), QStringLiteral("Something else"));
        QCOMPARE(edited.size(), 0);
    }

    // ---- FocusableTextField

    void fieldReportsEditingBeginAndEnd() {
        QWidget window;
        auto* layout = new QVBoxLayout(&window);
        auto* field = new FocusableTextField(QStringLiteral("Enter category name..."), &window);
        auto* other = new QPushButton(QStringLiteral("elsewhere"), &window);
        layout->addWidget(field);
        layout->addWidget(other);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitFor([&] { return QApplication::activeWindow() == &window; }));
        QCOMPARE(field->placeholderText(), QStringLiteral("Enter category name..."));
        QVERIFY(!field->hasFrame());

        other->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(other->hasFocus());
        QSignalSpy editing(field, &FocusableTextField::editingChanged);
        QSignalSpy text(field, &QLineEdit::textChanged);
        QTest::mouseClick(field, Qt::LeftButton);
        QTRY_COMPARE(editing.size(), 1);
        QCOMPARE(editing.at(0).at(0).toBool(), true);
        QTest::mouseClick(field, Qt::LeftButton); // a second click is not a second start
        QCOMPARE(editing.size(), 1);

        QTest::keyClicks(field, QStringLiteral("ab"));
        QCOMPARE(text.size(), 2); // every keystroke
        QCOMPARE(field->text(), QStringLiteral("ab"));

        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(editing.size(), 2);
        QCOMPARE(editing.at(1).at(0).toBool(), false);
        QTest::keyClicks(field, QStringLiteral("c"));
        QCOMPARE(editing.size(), 3);
        QCOMPARE(editing.at(2).at(0).toBool(), true);

        other->setFocus(Qt::TabFocusReason);
        QTRY_COMPARE(editing.size(), 4);
        QCOMPARE(editing.at(3).at(0).toBool(), false);
    }

    // ---- PrimaryButtonStyle

    void primaryButtonPadsItsLabel() {
        QPushButton plainLabel(QStringLiteral("Save"));
        plainLabel.setStyle(PrimaryButtonStyle::instance());
        PrimaryButtonStyle::apply(&plainLabel);
        const QFontMetrics metrics(plainLabel.font());
        const int textWidth = metrics.horizontalAdvance(QStringLiteral("Save"));
        // 12 at each side (QPushButton may round the text width up by a pixel).
        QVERIFY(qAbs(plainLabel.sizeHint().width() - (textWidth + 24)) <= 1);

        // A label that is already padded 12 x 6 gets the style's 12 x 4 on top.
        QPushButton padded(QStringLiteral("Save"));
        PrimaryButtonStyle::apply(&padded, QMargins(12, 6, 12, 6));
        QCOMPARE(padded.sizeHint().width(), plainLabel.sizeHint().width() + 24);
        QCOMPARE(padded.sizeHint().height(), plainLabel.sizeHint().height() + 12);
    }

    void primaryButtonDimsWhilePressed() {
        QWidget window;
        window.setAutoFillBackground(true);
        QPalette palette = window.palette();
        palette.setColor(QPalette::Window, Qt::white);
        palette.setColor(QPalette::Highlight, QColor(0, 90, 200));
        window.setPalette(palette);
        auto* layout = new QVBoxLayout(&window);
        QPushButton* button = FormParts::primaryButton(QStringLiteral("checkmark.circle.fill"),
                                                       QStringLiteral("Add"), 6, &window);
        layout->addWidget(button);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QPoint probe(4, button->height() / 2); // fill, clear of the label

        const QColor normal = window.grab().toImage().pixelColor(button->mapTo(&window, probe));
        QCOMPARE(normal, QColor(0, 90, 200));
        QTest::mousePress(button, Qt::LeftButton);
        QVERIFY(button->isDown());
        const QColor pressed = window.grab().toImage().pixelColor(button->mapTo(&window, probe));
        // 80 % accent over white.
        QVERIFY(qAbs(pressed.red() - (0 * 0.8 + 255 * 0.2)) <= 3);
        QVERIFY(qAbs(pressed.green() - (90 * 0.8 + 255 * 0.2)) <= 3);
        QVERIFY(qAbs(pressed.blue() - (200 * 0.8 + 255 * 0.2)) <= 3);
        QTest::mouseRelease(button, Qt::LeftButton);
        QCOMPARE(window.grab().toImage().pixelColor(button->mapTo(&window, probe)), normal);

        // The label is white.
        const QImage image = button->grab().toImage();
        bool sawWhite = false;
        for (int x = 0; x < image.width(); ++x)
            sawWhite = sawWhite || image.pixelColor(x, image.height() / 2) == QColor(Qt::white);
        QVERIFY(sawWhite);
    }
};

QTEST_MAIN(TextControlsTest)
#include "TextControlsTest.moc"
