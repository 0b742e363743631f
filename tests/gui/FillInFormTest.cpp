// The fill-in form driven from the keyboard (Tab order, Return, Ctrl+Return in a field of
// several lines, Escape), the values it remembers for a day, and the editor's placeholder menu,
// form line and warning for form fields.
#include "AddSnippetDialog.h"
#include "CustomTextEditor.h"
#include "FillInForm.h"
#include "GuiTestSupport.h"
#include "PlaceholderBar.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QToolButton>

using Values = QHash<QString, QString>;

namespace {
const Snippet letter = Snippet::create(
    ";letter", "Dear {{field:Name}},\n{{area:Body=Thanks}}\n{{choice:Close=Best|Regards}}, "
               "{{field:From=me}} {{cursor}}({{field:Name}})",
    {});

// Keys to whatever has the focus, as a person types them.
void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
}
void type(const QString& text) {
    QTest::keyClicks(QApplication::focusWidget(), text);
}
} // namespace

class FillInFormTest : public QObject {
    Q_OBJECT
    qint64 m_now = 1'000'000;

    bool show(FillInForm& form, const Snippet& snippet) {
        form.present(snippet);
        return QTest::qWaitForWindowActive(&form);
    }

private slots:
    void keyboardFirst_data() {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<bool>("filled");
        QTest::addColumn<Values>("values");
        // Keys: a letter is typed, T Tab, B Shift+Tab, R Return, C Ctrl+Return, D Down, E Escape.
        const Values byDefault{{"Name", ""}, {"Body", "Thanks"}, {"Close", "Best"}, {"From", "me"}};
        QTest::newRow("Return in the first field finishes")
            << "annR" << true << Values{{"Name", "ann"}, {"Body", "Thanks"}, {"Close", "Best"},
                                        {"From", "me"}};
        QTest::newRow("Tab through every field, Return in a line field finishes")
            << "aTTDTzR" << true
            << Values{{"Name", "a"}, {"Body", "Thanks"}, {"Close", "Regards"}, {"From", "z"}};
        QTest::newRow("Return in several lines is a line break, Ctrl+Return finishes")
            << "TxRyC" << true
            << Values{{"Name", ""}, {"Body", "Thanksx\ny"}, {"Close", "Best"}, {"From", "me"}};
        QTest::newRow("Shift+Tab goes back") << "TTBBqR" << true
                                             << Values{{"Name", "q"}, {"Body", "Thanks"},
                                                       {"Close", "Best"}, {"From", "me"}};
        QTest::newRow("Escape dismisses") << "abcE" << false << Values{};
        QTest::newRow("Escape in several lines dismisses") << "TE" << false << Values{};
        QTest::newRow("defaults as they stand") << "C" << true << byDefault;
    }
    void keyboardFirst() {
        QFETCH(QString, keys);
        QFETCH(bool, filled);
        QFETCH(Values, values);
        FillInForm form;
        QSignalSpy filledSpy(&form, &FillInForm::filled);
        QSignalSpy dismissedSpy(&form, &FillInForm::dismissed);
        QVERIFY(show(form, letter));
        // One input per distinct name, in the content's order, of the field's kind.
        QCOMPARE(form.inputs().size(), 4);
        QVERIFY(qobject_cast<QLineEdit*>(form.inputs()[0]));
        QVERIFY(qobject_cast<QPlainTextEdit*>(form.inputs()[1]));
        QVERIFY(qobject_cast<QComboBox*>(form.inputs()[2]));
        QCOMPARE(QApplication::focusWidget(), form.inputs()[0]);
        for (const QChar key : keys) {
            switch (key.unicode()) {
            case u'T': press(Qt::Key_Tab); break;
            case u'B': press(Qt::Key_Backtab, Qt::ShiftModifier); break;
            case u'R': press(Qt::Key_Return); break;
            case u'C': press(Qt::Key_Return, Qt::ControlModifier); break;
            case u'D': press(Qt::Key_Down); break;
            case u'E': press(Qt::Key_Escape); break;
            default: type(QString(key)); break;
            }
            if (!form.isVisible())
                break;
        }
        QVERIFY(!form.isVisible());
        QCOMPARE(filledSpy.size(), filled ? 1 : 0);
        QCOMPARE(dismissedSpy.size(), filled ? 0 : 1);
        if (filled)
            QCOMPARE(filledSpy.first().first().value<Values>(), values);
    }

    // The last values come back for the same snippet within a day, and only for it.
    void remembersTheLastValuesForADay() {
        FillInForm form([this] { return m_now; });
        QVERIFY(show(form, letter));
        type("Ann");
        press(Qt::Key_Tab);
        type(" a lot");
        press(Qt::Key_Tab);
        press(Qt::Key_Down);
        press(Qt::Key_Return);
        const Values given{{"Name", "Ann"}, {"Body", "Thanks a lot"}, {"Close", "Regards"},
                           {"From", "me"}};

        m_now += RecentFieldValues::keptMs - 1;
        QVERIFY(show(form, letter));
        QCOMPARE(form.values(), given);
        press(Qt::Key_Return); // given again: the day starts afresh
        Snippet other = letter;
        other.id = QUuid::createUuid();
        QVERIFY(show(form, other));
        QCOMPARE(form.values()["Name"], QString());
        press(Qt::Key_Escape); // nothing given: nothing remembered

        m_now += RecentFieldValues::keptMs - 1;
        QVERIFY(show(form, letter));
        QCOMPARE(form.values(), given);
        press(Qt::Key_Escape);
        m_now += 2;
        QVERIFY(show(form, letter));
        QCOMPARE(form.values()["Body"], "Thanks");
        QCOMPARE(form.values()["Close"], "Best");
    }

    // After a note only closing is left, and closing answers nothing more.
    void aNoteOnlyCloses() {
        FillInForm form;
        QSignalSpy dismissedSpy(&form, &FillInForm::dismissed);
        QSignalSpy filledSpy(&form, &FillInForm::filled);
        QVERIFY(show(form, letter));
        press(Qt::Key_Return);
        form.showNote("on the clipboard");
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        QCOMPARE(form.noteText(), "on the clipboard");
        QVERIFY(form.inputs().isEmpty());
        QTest::keyClick(&form, Qt::Key_Return);
        QVERIFY(!form.isVisible());
        QCOMPARE(filledSpy.size(), 1);
        QCOMPARE(dismissedSpy.size(), 0);
    }

    void editorOffersAndShowsTheFields() {
        EditorFixture fixture;
        AddSnippetDialog dialog(fixture.store(), fixture.addCategory("Work").id);
        PlaceholderBar* bar = dialog.form()->placeholderBar();
        CustomTextEditor* editor = dialog.form()->contentEditor();
        const auto choose = [bar](const QString& name) {
            bar->menuButton()->menu()->findChild<QAction*>("insert-" + name)->trigger();
        };
        QTest::keyClicks(editor, "Hi ");
        choose("field");
        QTest::keyClicks(editor, "Who"); // the name is selected, and typed over
        editor->moveCursor(QTextCursor::End);
        choose("choice");
        editor->moveCursor(QTextCursor::End);
        choose("area");
        editor->moveCursor(QTextCursor::End);
        choose("field-default");
        QCOMPARE(dialog.form()->content(),
                 "Hi {{field:Who}}{{choice:Label=a|b|c}}{{area:Name}}{{field:Name=default}}");
        QCOMPARE(bar->formText(), "Who, Label (one of a/b/c), Name (several lines)");
        QCOMPARE(bar->previewText(), "Hi a");
        QVERIFY(!bar->isWarningShown());

        editor->setText("{{field:}} {{choice:Size}} {{cursor}}");
        QVERIFY(bar->isWarningShown());
        QVERIFY(bar->warningText().contains("{{field:}} has no name"));
        QVERIFY(bar->warningText().contains("{{choice:Size}} offers nothing to choose"));
        QCOMPARE(bar->formText(), QString());
    }
};

QTEST_MAIN(FillInFormTest)
#include "FillInFormTest.moc"
