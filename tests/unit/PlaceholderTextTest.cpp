// Reading a content's placeholders: what each one types, where the cursor goes, and what is
// typed as written and reported.
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
        QTest::addColumn<std::optional<QString>>("clipboard");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<qsizetype>("cursor");
        QTest::addColumn<Problems>("problems");

        const std::optional<QString> none;
        const std::optional<QString> text = QStringLiteral("pasted");
        // At the fixed moment, in the locale the test renders with.
        const QString date = locale().toString(moment().date(), QLocale::ShortFormat);
        const QString time = locale().toString(moment().time(), QLocale::ShortFormat);
        QTest::newRow("plain") << "Dear {sir} }" << none << "Dear {sir} }" << qsizetype(-1)
                               << Problems{};
        QTest::newRow("locale date and time")
            << "{{date}} at {{time}}" << none << date + " at " + time << qsizetype(-1)
            << Problems{};
        QTest::newRow("date format") << "on {{date:yyyy-MM-dd}}." << none << "on 2024-03-05."
                                     << qsizetype(-1) << Problems{};
        QTest::newRow("time format") << "{{time:HH:mm:ss}}" << none << "14:07:09"
                                     << qsizetype(-1) << Problems{};
        QTest::newRow("clipboard") << "[{{clipboard}}]" << text << "[pasted]" << qsizetype(-1)
                                   << Problems{};
        QTest::newRow("clipboard without text")
            << "[{{clipboard}}]" << none << "[]" << qsizetype(-1) << Problems{};
        QTest::newRow("cursor") << "<b>{{cursor}}</b>" << none << "<b></b>" << qsizetype(3)
                                << Problems{};
        QTest::newRow("second cursor typed as written")
            << "a{{cursor}}b{{cursor}}" << none << "ab{{cursor}}" << qsizetype(1)
            << Problems{{Problem::ExtraCursor, 12}};
        QTest::newRow("escape") << "{{{{date}} and {{{{" << none << "{{date}} and {{"
                                << qsizetype(-1) << Problems{};
        QTest::newRow("three braces") << "{{{date:yy}}}" << none << "{24}" << qsizetype(-1)
                                      << Problems{};
        QTest::newRow("unknown names") << "Hi {{name}}, {{Date}}" << none
                                       << "Hi {{name}}, {{Date}}" << qsizetype(-1)
                                       << Problems{{Problem::UnknownName, 3},
                                                   {Problem::UnknownName, 13}};
        QTest::newRow("not closed") << "{{date and {{time}}" << none << "{{date and " + time
                                    << qsizetype(-1) << Problems{{Problem::NotClosed, 0}};
        QTest::newRow("not closed on its line")
            << "{{date\n}}" << none << "{{date\n}}" << qsizetype(-1)
            << Problems{{Problem::NotClosed, 0}, {Problem::StrayClosing, 7}};
        QTest::newRow("closing alone") << "a }} b" << none << "a }} b" << qsizetype(-1)
                                       << Problems{{Problem::StrayClosing, 2}};
        QTest::newRow("empty") << "x{{}}" << none << "x{{}}" << qsizetype(-1)
                               << Problems{{Problem::EmptyBraces, 1}};
        QTest::newRow("nested") << "{{a{{b}}}} {{cursor}}" << none << "{{a{{b}}}} "
                                << qsizetype(11) << Problems{{Problem::Nested, 0}};
        QTest::newRow("nested known names") << "{{date{{time}}}}" << none
                                            << "{{date{{time}}}}" << qsizetype(-1)
                                            << Problems{{Problem::Nested, 0}};
    }

    void rendersAndReports() {
        QFETCH(QString, content);
        QFETCH(std::optional<QString>, clipboard);
        QFETCH(QString, typed);
        QFETCH(qsizetype, cursor);
        QFETCH(Problems, problems);

        const PlaceholderText placeholders(content);
        const auto rendered = placeholders.render(moment(), clipboard, locale());
        QCOMPARE(rendered.text, typed);
        QCOMPARE(rendered.cursor, cursor);
        QCOMPARE(rendered.clipboardMissing,
                 !clipboard && placeholders.uses(PlaceholderText::Kind::Clipboard));
        Problems found;
        for (const auto& issue : placeholders.issues()) {
            found.append({issue.problem, issue.position});
            // The report quotes the content as written there.
            QVERIFY(content.mid(issue.position).startsWith(issue.written));
        }
        QCOMPARE(found, problems);
        // Only text a placeholder or an escape changes counts as dynamic.
        QCOMPARE(placeholders.isDynamic(), typed != content || cursor >= 0);
    }
};

QTEST_GUILESS_MAIN(PlaceholderTextTest)
#include "PlaceholderTextTest.moc"
