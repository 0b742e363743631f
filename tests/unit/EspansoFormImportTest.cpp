// espanso forms as Typolet's form fields: a `form` match's layout with its [[name]] fields and
// their `form_fields`, and a `form` variable's fields used as {{form1.name}}; what cannot be
// read that way is named, never typed as braces without a word.
#include "EspansoMatchFile.h"
#include "ImportReader.h"
#include "PlaceholderText.h"

#include <QtTest>

class EspansoFormImportTest : public QObject {
    Q_OBJECT
private slots:
    void formsBecomeFormFields_data() {
        QTest::addColumn<QByteArray>("yaml");
        QTest::addColumn<QStringList>("contents");
        QTest::addColumn<QStringList>("typedAsWritten");
        QTest::newRow("form match") << QByteArray(R"y(matches:
  - trigger: ":letter"
    form: |
      Dear [[name]], {{not a var}}
      [[body]]
      [[closing]], [[ sender ]] ([[name]])
    form_fields:
      body:
        multiline: true
      closing:
        type: choice
        values: ["Best", "Kind regards", "a|b\\c"]
      sender:
        default: "Ada"
      unused:
        type: text
)y") << QStringList{"Dear {{field:name}}, {{{{not a var}}\n{{area:body}}\n"
                    "{{choice:closing=Best|Kind regards|a\\|b\\\\c}}, {{field:sender=Ada}} "
                    "({{field:name}})\n"}
     << QStringList{};
        QTest::newRow("form variable") << QByteArray(R"y(matches:
  - trigger: ":ask"
    replace: "Hi {{form1.who}}, see {{form1.size}} {{ form1.who }} {{form2.x}}"
    vars:
      - name: form1
        type: form
        params:
          layout: "Who [[who]], size [[size]]"
          fields:
            size:
              type: list
              values: [S, M]
      - name: form2
        type: form
)y") << QStringList{"Hi {{field:who}}, see {{choice:size=S|M}} {{field:who}} {{form2.x}}"}
     << QStringList{"form2 (form)"};
    }
    void formsBecomeFormFields() {
        QFETCH(QByteArray, yaml);
        QFETCH(QStringList, contents);
        QFETCH(QStringList, typedAsWritten);
        ImportReader reader;
        const ImportPlan plan = EspansoMatchFile::decode("forms.yml", yaml, reader);
        QVERIFY2(!plan.failed(), qPrintable(plan.error));
        QStringList found;
        for (const Snippet& snippet : plan.snippets) {
            found.append(snippet.content);
            // Every field reads as one: the only braces typed as written are those named.
            const PlaceholderText placeholders(snippet.content);
            QVERIFY(placeholders.asksForValues());
            QCOMPARE(placeholders.issues().size(), typedAsWritten.size());
        }
        QCOMPARE(found, contents);
        QCOMPARE(plan.typedAsWritten, typedAsWritten);
        QCOMPARE(plan.skipped, 0);
    }
};

QTEST_GUILESS_MAIN(EspansoFormImportTest)
#include "EspansoFormImportTest.moc"
