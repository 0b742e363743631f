// Reading a content's form fields: the inputs the form shows (names, kinds, defaults, choices),
// what the content types with the values given or without them, and what is typed as written.
#include "PlaceholderText.h"

#include <QtTest>

using Kind = PlaceholderText::Kind;
using Problem = PlaceholderText::Problem;
using Values = QHash<QString, QString>;
// One input as the test writes it: kind, name, default, choices.
struct Input {
    Kind kind;
    QString name;
    QString byDefault;
    QStringList options;
    friend bool operator==(const Input&, const Input&) = default;
};
using Inputs = QList<Input>;
using Problems = QList<std::pair<Problem, qsizetype>>;

class FormFieldsTest : public QObject {
    Q_OBJECT
    static QDateTime moment() { return {QDate(2024, 3, 5), QTime(14, 7, 9)}; }

private slots:
    void readsTheForm_data() {
        QTest::addColumn<QString>("content");
        QTest::addColumn<Inputs>("inputs");
        QTest::addColumn<Values>("values");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("typedByDefault");
        QTest::addColumn<qsizetype>("cursor");
        QTest::addColumn<Problems>("problems");
        const auto row = [](const char* name, const QString& content, const Inputs& inputs,
                            const Values& values, const QString& typed,
                            const QString& typedByDefault, qsizetype cursor = -1,
                            const Problems& problems = {}) {
            QTest::newRow(name) << content << inputs << values << typed << typedByDefault
                                << cursor << problems;
        };
        row("one field", "Dear {{field:Name}},", {{Kind::Field, "Name", "", {}}},
            {{"Name", "Ann"}}, "Dear Ann,", "Dear ,");
        row("default", "Hi {{field:Who=team}}!", {{Kind::Field, "Who", "team", {}}}, {},
            "Hi team!", "Hi team!");
        row("name trimmed, default kept as written", "{{field: First name = x }}",
            {{Kind::Field, "First name", " x ", {}}}, {{"First name", "Bo"}}, "Bo", " x ");
        row("same name, one value", "{{field:N}} and {{field:N=other}} {{area:N}}",
            {{Kind::Field, "N", "", {}}}, {{"N", "v"}}, "v and v v", " and  ");
        row("names are case-sensitive", "{{field:a}}{{field:A}}",
            {{Kind::Field, "a", "", {}}, {Kind::Field, "A", "", {}}}, {{"a", "1"}, {"A", "2"}},
            "12", "");
        row("area", "Notes:\n{{area:Notes=none}}", {{Kind::Area, "Notes", "none", {}}},
            {{"Notes", "one\ntwo"}}, "Notes:\none\ntwo", "Notes:\nnone");
        row("choice", "Size {{choice:Size=S|M|L}}", {{Kind::Choice, "Size", "", {"S", "M", "L"}}},
            {{"Size", "L"}}, "Size L", "Size S");
        row("choice escapes", "{{choice:Op=a\\|b|c\\\\d||}}",
            {{Kind::Choice, "Op", "", {"a|b", "c\\d"}}}, {}, "a|b", "a|b");
        row("escaped braces are no field", "{{{{field:x}} {{field:y}}",
            {{Kind::Field, "y", "", {}}}, {{"y", "Y"}}, "{{field:x}} Y", "{{field:x}} ");
        row("with the cursor", "To {{field:To}}: {{cursor}} {{date:yyyy}}",
            {{Kind::Field, "To", "", {}}}, {{"To", "Eve"}}, "To Eve:  2024", "To :  2024", 8);
        row("no name", "a{{field:}}b{{area:=x}}c{{choice: =p|q}}", {}, {},
            "a{{field:}}b{{area:=x}}c{{choice: =p|q}}",
            "a{{field:}}b{{area:=x}}c{{choice: =p|q}}", -1,
            {{Problem::UnnamedField, 1}, {Problem::UnnamedField, 12}, {Problem::UnnamedField, 24}});
        row("choice with nothing to choose", "{{choice:Size}}{{choice:T=|}}", {}, {},
            "{{choice:Size}}{{choice:T=|}}", "{{choice:Size}}{{choice:T=|}}", -1,
            {{Problem::NoChoices, 0}, {Problem::NoChoices, 15}});
        row("kind names are exact", "{{Field:x}} {{fields:x}}", {}, {}, "{{Field:x}} {{fields:x}}",
            "{{Field:x}} {{fields:x}}", -1, {{Problem::UnknownName, 0}, {Problem::UnknownName, 12}});
    }

    void readsTheForm() {
        QFETCH(QString, content);
        QFETCH(Inputs, inputs);
        QFETCH(Values, values);
        QFETCH(QString, typed);
        QFETCH(QString, typedByDefault);
        QFETCH(qsizetype, cursor);
        QFETCH(Problems, problems);
        const PlaceholderText placeholders(content);
        Inputs found;
        for (const auto& field : placeholders.formFields())
            found.append({field.kind, field.name, field.text, field.options});
        QCOMPARE(found, inputs);
        QCOMPARE(placeholders.asksForValues(), !inputs.isEmpty());
        const QLocale locale(QLocale::English);
        const auto rendered = placeholders.render(moment(), std::nullopt, locale, values);
        QCOMPARE(rendered.text, typed);
        QCOMPARE(rendered.cursor, cursor);
        QCOMPARE(placeholders.render(moment(), std::nullopt, locale).text, typedByDefault);
        Problems reported;
        for (const auto& issue : placeholders.issues())
            reported.append({issue.problem, issue.position});
        QCOMPARE(reported, problems);
    }
};

QTEST_GUILESS_MAIN(FormFieldsTest)
#include "FormFieldsTest.moc"
