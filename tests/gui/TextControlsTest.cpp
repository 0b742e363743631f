// The shared controls: the multi-line editor, the single-line field and the primary button.
#include "CustomTextEditor.h"
#include "FocusableTextField.h"
#include "FormParts.h"
#include "GuiTestSupport.h"
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
        // Long lines wrap; the vertical scroller shows only while the text is taller.
        QVERIFY(!editor.verticalScrollBar()->isVisible());
        editor.setText(QStringLiteral("word ").repeated(60) + QString(300, QChar(u'x')));
        QTRY_VERIFY(editor.document()->firstBlock().layout()->lineCount() > 5);
        QCOMPARE(editor.horizontalScrollBar()->maximum(), 0);
        QTRY_VERIFY(editor.verticalScrollBar()->isVisible());
        editor.setText(QStringLiteral("short"));
        QTRY_VERIFY(!editor.verticalScrollBar()->isVisible());
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

    void primaryButton() {
        // The style pads a label 12 at each side (QPushButton may round the text width up);
        // a label that is already padded 12 x 6 gets the style's 12 x 4 on top.
        QPushButton bare(QStringLiteral("Save"));
        PrimaryButtonStyle::apply(&bare);
        const int textWidth = QFontMetrics(bare.font()).horizontalAdvance(QStringLiteral("Save"));
        QVERIFY(qAbs(bare.sizeHint().width() - (textWidth + 24)) <= 1);
        QPushButton padded(QStringLiteral("Save"));
        PrimaryButtonStyle::apply(&padded, QMargins(12, 6, 12, 6));
        QCOMPARE(padded.sizeHint(), bare.sizeHint() + QSize(24, 12));
        // Accent fill and a white label; 80 % opacity while pressed.
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
        const auto fill = [&] { // left of the label
            return window.grab().toImage().pixelColor(
                button->mapTo(&window, QPoint(4, button->height() / 2)));
        };
        QCOMPARE(fill(), QColor(0, 90, 200));
        QTest::mousePress(button, Qt::LeftButton);
        QVERIFY(button->isDown());
        const QColor pressed = fill(); // 0.8 * (0, 90, 200) + 0.2 * white
        QVERIFY2(qAbs(pressed.red() - 51) <= 3 && qAbs(pressed.green() - 123) <= 3 &&
                     qAbs(pressed.blue() - 211) <= 3,
                 qPrintable(pressed.name()));
        QTest::mouseRelease(button, Qt::LeftButton);
        QCOMPARE(fill(), QColor(0, 90, 200));
        const QImage image = button->grab().toImage();
        bool sawWhite = false;
        for (int x = 0; x < image.width() && !sawWhite; ++x)
            sawWhite = image.pixelColor(x, image.height() / 2) == QColor(Qt::white);
        QVERIFY(sawWhite);
    }
};

QTEST_MAIN(TextControlsTest)
#include "TextControlsTest.moc"
