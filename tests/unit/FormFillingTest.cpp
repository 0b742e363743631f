// A content with form fields in the engine: the command is erased, the values are asked for,
// keys typed into the form are nobody's typing, and the answer types the content, puts the
// command back (Escape) or types nothing (the focus did not come back).
#include "CapturedDiagnostics.h"
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
using Phase = ExpansionLifecycle::Phase;
using Values = QHash<QString, QString>;
using Expansions = QList<Expansion>;
Q_DECLARE_METATYPE(Phase)

namespace {
// The application's side, answered by the test.
class ScriptedForm : public FormValueSource {
public:
    QList<Snippet> asked;
    AnswerHandler answer;
    void askValues(const Snippet& snippet, AnswerHandler answered) override {
        asked.append(snippet);
        answer = std::move(answered);
    }
};

Expansion erase(int count) {
    return {ExpansionAction::erase(count)};
}
Expansion typed(const QString& text) {
    return TextExpander::replacement(0, text);
}
} // namespace

class FormFillingTest : public QObject {
    Q_OBJECT
private slots:
    void answers_data() {
        QTest::addColumn<QString>("content");
        QTest::addColumn<bool>("afterWordEnd");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("afterAnswer"); // keys typed after the answer; '\b' BackSpace
        QTest::addColumn<Expansions>("expected");
        QTest::addColumn<Phase>("phaseAfter");
        const QString letter = "Hi {{field:N}}, {{choice:C=x|y}}!";
        const auto row = [](const char* name, const QString& content, bool afterWordEnd,
                            Outcome outcome, const QString& keys, const Expansions& expected,
                            Phase after) {
            QTest::newRow(name) << content << afterWordEnd << int(outcome) << keys << expected
                                << after;
        };
        row("filled", letter, false, Outcome::Filled, "", {erase(2), typed("Hi Bo, y!")},
            Phase::UndoWindow);
        row("filled, then BackSpace puts the command back", letter, false, Outcome::Filled, "\b",
            {erase(2), typed("Hi Bo, y!"), TextExpander::replacement(8, ";l")}, Phase::Idle);
        row("after its word: the space comes back after the content", letter, true,
            Outcome::Filled, "", {erase(3), typed("Hi Bo, y! ")}, Phase::UndoWindow);
        row("the cursor is honoured", "To {{field:N}}{{cursor}}.", false, Outcome::Filled, "",
            {erase(2), typed("To Bo.") + Expansion{ExpansionAction::moveLeft(1)}}, Phase::Idle);
        row("Escape puts the command back as typed", letter, true, Outcome::Dismissed, "",
            {erase(3), typed(";l ")}, Phase::Idle);
        row("the focus did not come back: nothing typed", letter, false, Outcome::FocusLost, "",
            {erase(2)}, Phase::Idle);
    }
    void answers() {
        QFETCH(QString, content);
        QFETCH(bool, afterWordEnd);
        QFETCH(int, outcome);
        QFETCH(QString, afterAnswer);
        QFETCH(Expansions, expected);
        QFETCH(Phase, phaseAfter);
        TemporarySettings settings;
        SnippetStore store(settings.path());
        store.appendSnippet(Snippet::create(";l", content, Category::defaultCategoryId,
                                            afterWordEnd ? Snippet::Trigger::AfterWordEnd
                                                         : Snippet::Trigger::Immediately));
        store.appendSnippet(Snippet::create(";x", "other", Category::defaultCategoryId));
        RecordingKeyboardOutput output;
        double now = 1000;
        TextExpander engine(store, &output, [&now] { return now; });
        ScriptedForm form;
        engine.setFormValues(&form);
        const auto type = [&](const QString& keys) {
            for (const QChar c : keys) {
                now += 0.1;
                engine.handleKeyPress(QString(c));
                QCoreApplication::processEvents();
            }
        };
        type(afterWordEnd ? ";l " : ";l");
        QCOMPARE(engine.phase(), Phase::FillingIn);
        QCOMPARE(form.asked.size(), 1);
        QCOMPARE(form.asked.first().command, ";l");
        type(";x"); // into the form: nothing matches, nothing is kept
        QCOMPARE(engine.buffer(), QString());
        QCOMPARE(form.asked.size(), 1);
        form.answer({Outcome(outcome), Values{{"N", "Bo"}, {"C", "y"}}});
        QCoreApplication::processEvents();
        type(afterAnswer);
        QCOMPARE(output.performed, expected);
        QCOMPARE(engine.phase(), phaseAfter);
    }

    // Without the application's form the defaults are typed at once.
    void withoutAFormTheDefaultsGoOut() {
        TemporarySettings settings;
        SnippetStore store(settings.path());
        store.appendSnippet(Snippet::create(";l", "Hi {{field:N=you}} {{choice:C=x|y}}",
                                            Category::defaultCategoryId));
        RecordingKeyboardOutput output;
        TextExpander engine(store, &output);
        for (const QChar c : QStringLiteral(";l"))
            engine.handleKeyPress(QString(c));
        QCOMPARE(output.performed, Expansions{TextExpander::replacement(2, "Hi you x")});
    }

    // Keys the monitor reports while the form is open are neither buffered nor told by code.
    void keysIntoTheFormAreNotTyping() {
        TemporarySettings settings;
        SnippetStore store(settings.path());
        store.appendSnippet(Snippet::create("a", "{{field:N}}", Category::defaultCategoryId));
        CompiledKeymapSource keymaps{QStringLiteral("us")};
        KeyTranslator translator{keymaps, QStringLiteral("en_US.UTF-8")};
        FakePermissionProbe permissions{true, true};
        FakeKeyMonitor monitor;
        RecordingKeyboardOutput output;
        FakePasswordFieldWatch passwordField;
        FakeFocusedApplication focus;
        CapturedDiagnostics diagnostics;
        TextExpander engine(store, EnginePlatform{&permissions, &monitor, &translator, &output,
                                                  &focus, &passwordField});
        ScriptedForm form;
        engine.setFormValues(&form);
        constexpr uint32_t keyA = 38;
        monitor.press(keyA);
        QTRY_COMPARE(form.asked.size(), 1);
        QTRY_VERIFY(!monitor.holding()); // the form gets the keys
        diagnostics.lines.clear();
        monitor.press(keyA);
        monitor.focusChange(); // the form took the focus
        monitor.click();
        QCoreApplication::processEvents();
        QCOMPARE(form.asked.size(), 1);
        QCOMPARE(engine.phase(), Phase::FillingIn);
        QCOMPARE(diagnostics.lines.filter("Key down").size(), 1);
        QVERIFY(diagnostics.lines.filter("38").isEmpty());
        form.answer({Outcome::Filled, Values{{"N", "Bo"}}});
        QTRY_COMPARE(output.performed.size(), 2);
        QCOMPARE(output.performed.last(), typed("Bo"));
    }
};

QTEST_GUILESS_MAIN(FormFillingTest)
#include "FormFillingTest.moc"
