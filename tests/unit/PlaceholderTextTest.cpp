// Reading a content's placeholders: what each types, where the cursor goes, and what is typed
// as written and reported.
#include "PlaceholderText.h"

#include <QtTest>

using Problem = PlaceholderText::Problem;
using Problems = QList<std::pair<Problem, qsizetype>>; // what, and where in the content

class PlaceholderTextTest : public QObject {
    Q_OBJECT
    static QDateTime moment() { return {QDate(2024, 3, 5), QTime(14, 7, 9)}; }
    static QLocale locale() { return QLocale(QLocale::German, QLocale::Germany); }

private slots:
    void rendersAndReports_data() {
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<qsizetype>("cursor");
        QTest::addColumn<Problems>("problems");
        const QString time = locale().toString(moment().time(), QLocale::ShortFormat);
        const auto row = [](const char* name, const QString& content, const QString& typed,
                            qsizetype cursor = -1, const Problems& problems = {}) {
            QTest::newRow(name) << content << typed << cursor << problems;
        };
        row("plain", "Dear {sir} }", "Dear {sir} }");
        row("locale date and time", "{{date}} at {{time}}",
            locale().toString(moment().date(), QLocale::ShortFormat) + " at " + time);
        row("formats", "{{date:yyyy-MM-dd}} {{time:HH:mm:ss}}", "2024-03-05 14:07:09");
        row("clipboard", "[{{clipboard}}]", "[pasted]");
        row("cursor", "<b>{{cursor}}</b>", "<b></b>", 3);
        row("second cursor", "a{{cursor}}b{{cursor}}", "ab{{cursor}}", 1,
            {{Problem::ExtraCursor, 12}});
        row("escape", "{{{{date}} and {{{{", "{{date}} and {{");
        row("three braces", "{{{date:yy}}}", "{24}");
        row("unknown names", "Hi {{name}}, {{Date}}", "Hi {{name}}, {{Date}}", -1,
            {{Problem::UnknownName, 3}, {Problem::UnknownName, 13}});
        row("not closed", "{{date and {{time}}", "{{date and " + time, -1,
            {{Problem::NotClosed, 0}});
        row("not closed on its line", "{{date\n}}", "{{date\n}}", -1,
            {{Problem::NotClosed, 0}, {Problem::StrayClosing, 7}});
        row("empty", "x{{}}", "x{{}}", -1, {{Problem::EmptyBraces, 1}});
        row("nested", "{{a{{b}}}} {{cursor}}", "{{a{{b}}}} ", 11, {{Problem::Nested, 0}});
        row("nested names", "{{date{{time}}}}", "{{date{{time}}}}", -1, {{Problem::Nested, 0}});
    }

    void rendersAndReports() {
        QFETCH(QString, content);
        QFETCH(QString, typed);
        QFETCH(qsizetype, cursor);
        QFETCH(Problems, problems);
        const PlaceholderText placeholders(content);
        const auto rendered = placeholders.render(moment(), QStringLiteral("pasted"), locale());
        QCOMPARE(rendered.text, typed);
        QCOMPARE(rendered.cursor, cursor);
        Problems found;
        for (const auto& issue : placeholders.issues()) {
            found.append({issue.problem, issue.position});
            QVERIFY(content.mid(issue.position).startsWith(issue.written)); // quoted as written
        }
        QCOMPARE(found, problems);
        QCOMPARE(placeholders.isDynamic(), typed != content || cursor >= 0);
        // Without text on the clipboard its placeholder types nothing, and says so.
        const auto noText = placeholders.render(moment(), std::nullopt, locale());
        QCOMPARE(noText.clipboardMissing, placeholders.uses(PlaceholderText::Kind::Clipboard));
        QCOMPARE(noText.text, QString(typed).remove("pasted"));
    }
};

QTEST_GUILESS_MAIN(PlaceholderTextTest)
#include "PlaceholderTextTest.moc"
