// Keys typed for the application around a fill-in form: those typed before the form has the
// keyboard, and those typed once it is done, are kept from every window and typed after the
// answer's output (the content, or the command put back), in the order typed. Where the focus
// does not come back after Escape, what was typed goes to the user another way.
#include "CompiledKeymapSource.h"
#include "FakeFocusedApplication.h"
#include "FakeKeyMonitor.h"
#include "FakePasswordFieldWatch.h"
#include "FakePermissionProbe.h"
#include "FormValueSource.h"
#include "KeyTranslator.h"
#include "RecordingKeyboardOutput.h"
#include "SnippetStore.h"
#include "TemporarySettings.h"
#include "TextExpander.h"

#include <QtTest>

using Outcome = FormValueSource::Answer::Outcome;
using Expansions = QList<Expansion>;
using Keys = QList<uint32_t>;

namespace {
// The application's side; the test says when the form has the focus and when it is done.
class DrivenForm : public FormValueSource {
public:
    int asked = 0;
    AnswerHandler answer;
    FocusHandlers focus;
    QStringList keptForUser;
    void askValues(const Snippet&, AnswerHandler answered) override {
        ++asked;
        answer = std::move(answered);
    }
    void setFocusHandlers(FocusHandlers handlers) override { focus = std::move(handlers); }
    void keepForUser(const QString& typed) override { keptForUser.append(typed); }
};

// Key codes of the US layout.
constexpr uint32_t keyQ = 24, keyB = 56, keyC = 54, keyBackSpace = 22, keyLeft = 113, keyEscape = 9;
} // namespace

class FormHeldKeysTest : public QObject {
    Q_OBJECT
private slots:
    void heldUntilTheAnswerIsTyped_data() {
        QTest::addColumn<Keys>("beforeFocus");
        QTest::addColumn<Keys>("slippedAtClose"); // reached the form before the hold began
        QTest::addColumn<Keys>("afterForm");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<Expansions>("expected");
        QTest::addColumn<QStringList>("kept");
        const Expansion erase{ExpansionAction::erase(1)};
        const auto typed = [](const QString& text) { return TextExpander::replacement(0, text); };
        QTest::newRow("typed on before the form: after the content")
            << Keys{keyB, keyC} << Keys{} << Keys{} << int(Outcome::Filled)
            << Expansions{erase, typed("Hi Bo!bc")} << QStringList();
        QTest::newRow("BackSpace among them takes one back, an arrow is left out")
            << Keys{keyB, keyBackSpace, keyC, keyLeft} << Keys{} << Keys{} << int(Outcome::Filled)
            << Expansions{erase, typed("Hi Bo!c")} << QStringList();
        QTest::newRow("typed right after Escape: after the command")
            << Keys{} << Keys{} << Keys{keyB} << int(Outcome::Dismissed)
            << Expansions{erase, typed("qb")} << QStringList();
        QTest::newRow("both, in the order typed")
            << Keys{keyB} << Keys{} << Keys{keyC} << int(Outcome::Dismissed)
            << Expansions{erase, typed("qbc")} << QStringList();
        QTest::newRow("beat the hold: those after Escape follow, the form's own do not")
            << Keys{} << Keys{keyB, keyEscape, keyC} << Keys{} << int(Outcome::Dismissed)
            << Expansions{erase, typed("qc")} << QStringList();
        QTest::newRow("after Escape the focus did not come back: handed to the user")
            << Keys{keyB} << Keys{} << Keys{keyC} << int(Outcome::FocusLost) << Expansions{erase}
            << QStringList{"qbc"};
    }
    void heldUntilTheAnswerIsTyped() {
        QFETCH(Keys, beforeFocus);
        QFETCH(Keys, slippedAtClose);
        QFETCH(Keys, afterForm);
        QFETCH(int, outcome);
        QFETCH(Expansions, expected);
        QFETCH(QStringList, kept);
        TemporarySettings settings;
        SnippetStore store(settings.path());
        store.appendSnippet(Snippet::create("q", "Hi {{field:N}}!", Category::defaultCategoryId));
        CompiledKeymapSource keymaps{QStringLiteral("us")};
        KeyTranslator translator{keymaps, QStringLiteral("en_US.UTF-8")};
        FakePermissionProbe permissions{true, true};
        FakeKeyMonitor monitor;
        RecordingKeyboardOutput output;
        FakePasswordFieldWatch passwordField;
        FakeFocusedApplication focus;
        TextExpander engine(store, EnginePlatform{&permissions, &monitor, &translator, &output,
                                                  &focus, &passwordField});
        DrivenForm form;
        engine.setFormValues(&form);

        monitor.press(keyQ);
        QTRY_COMPARE(form.asked, 1);
        QVERIFY(monitor.holding()); // until the form has the keyboard
        for (const uint32_t key : beforeFocus)
            monitor.press(key);
        form.focus.focused();
        QTRY_VERIFY(!monitor.holding());
        monitor.press(keyB); // into the form: the form's, never typed by the engine
        for (const uint32_t key : slippedAtClose)
            monitor.slip(key);
        form.focus.leaving();
        QVERIFY(monitor.holding());
        for (const uint32_t key : afterForm)
            monitor.press(key);
        form.answer({Outcome(outcome), {{"N", "Bo"}}, outcome == int(Outcome::FocusLost)});
        QTRY_VERIFY(!monitor.holding());
        QCOMPARE(output.performed, expected);
        QCOMPARE(form.keptForUser, kept);
        // Kept from every window while held: none of them reached the form or the application.
        QCOMPARE(monitor.dropped, beforeFocus + afterForm);
    }
};

QTEST_GUILESS_MAIN(FormHeldKeysTest)
#include "FormHeldKeysTest.moc"
