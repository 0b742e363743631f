// Which keys type a text: checked by replaying each plan on a model of the keyboard mapping.
#include "CompiledKeymapSource.h"
#include "KeystrokePlanner.h"

#include <QtTest>
#include <xkbcommon/xkbcommon.h>

namespace {
// A tiny keyboard: Shift, a and b, and keycodes 11 to 13 with nothing on them.
const char* const tinyKeymap = R"(xkb_keymap {
    xkb_keycodes { minimum = 8; maximum = 13; <LFSH> = 8; <AC01> = 9; <AC02> = 10;
                   <I11> = 11; <I12> = 12; <I13> = 13; };
    xkb_types { include "complete" };
    xkb_compat { include "complete" };
    xkb_symbols {
        key <LFSH> { [ Shift_L ] };
        key <AC01> { [ a, A ] };
        key <AC02> { [ b, B ] };
        modifier_map Shift { <LFSH> };
    };
};)";

// The same without a Shift key.
const char* const noShiftKeymap = R"(xkb_keymap {
    xkb_keycodes { minimum = 8; maximum = 12; <AC01> = 9; <I11> = 11; <I12> = 12; };
    xkb_types { include "complete" };
    xkb_compat { include "complete" };
    xkb_symbols { key <AC01> { [ a, A ] }; };
};)";

// The server's mapping as the plan changes it, for replaying plans.
class MappingModel {
public:
    explicit MappingModel(xkb_keymap* keymap, uint32_t group = 0) : m_keymap(keymap), m_group(group) {}

    // The keysyms the plan's strokes produce, or an explanation of what went wrong.
    QList<uint32_t> replay(const KeystrokePlanner::Plan& plan, QString* problem) {
        QList<uint32_t> typed;
        for (const auto& batch : plan.batches) {
            for (const auto& binding : batch.bindings) {
                const auto old = m_bound.value(binding.keyCode, {0, 0});
                const bool changesAUsedSlot = (old.first && old.first != binding.keysyms[0]) ||
                                              (old.second && old.second != binding.keysyms[1]);
                if (changesAUsedSlot != binding.rebinds && problem)
                    *problem = QStringLiteral("rebinding of %1 not flagged right").arg(binding.keyCode);
                m_bound[binding.keyCode] = {binding.keysyms[0], binding.keysyms[1]};
            }
            for (const auto& stroke : batch.strokes)
                typed.append(keysymOf(stroke));
        }
        return typed;
    }

private:
    uint32_t keysymOf(const KeystrokePlanner::Stroke& stroke) const {
        if (m_bound.contains(stroke.keyCode)) {
            const auto syms = m_bound.value(stroke.keyCode);
            return stroke.shift ? (syms.second ? syms.second : syms.first) : syms.first;
        }
        const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(m_keymap, stroke.keyCode);
        if (layouts == 0)
            return 0;
        const xkb_keysym_t* syms = nullptr;
        if (xkb_keymap_key_get_syms_by_level(m_keymap, stroke.keyCode, m_group % layouts,
                                             stroke.shift ? 1 : 0, &syms) != 1)
            return 0;
        return syms[0];
    }

    xkb_keymap* m_keymap;
    uint32_t m_group;
    QHash<uint32_t, std::pair<uint32_t, uint32_t>> m_bound;
};

QList<uint32_t> keysymsOf(const QString& text) {
    QList<uint32_t> keysyms;
    const QList<uint> codePoints = text.toUcs4();
    for (qsizetype i = 0; i < codePoints.size(); ++i) {
        if (codePoints[i] == '\n' && i > 0 && codePoints[i - 1] == '\r')
            continue;
        if (const uint32_t keysym = KeystrokePlanner::keysymFor(codePoints[i]))
            keysyms.append(keysym);
    }
    return keysyms;
}

int bindingCount(const KeystrokePlanner::Plan& plan) {
    int count = 0;
    for (const auto& batch : plan.batches)
        count += int(batch.bindings.size());
    return count;
}

QString cycled(const QString& alphabet, int length) {
    QString text;
    while (text.size() < length)
        text += alphabet;
    return text.left(length);
}
} // namespace

class KeystrokePlannerTest : public QObject {
    Q_OBJECT

    // Plans `text`, replays it and checks that it types exactly the text.
    static KeystrokePlanner::Plan planAndReplay(KeystrokePlanner& planner, KeymapSource& source,
                                                const QString& text, MappingModel& model) {
        planner.reconcile(source.currentKeymap());
        const auto plan = planner.plan(source.currentKeymap(), source.currentGroup(), text);
        QString problem;
        const QList<uint32_t> typed = model.replay(plan, &problem);
        if (!problem.isEmpty())
            qWarning() << problem;
        [&] {
            QVERIFY(problem.isEmpty());
            QCOMPARE(typed, keysymsOf(text));
        }();
        return plan;
    }

private slots:
    void layoutCharactersUseTheirKeysWithoutBinding() {
        CompiledKeymapSource source(QStringLiteral("us"));
        KeystrokePlanner planner;
        MappingModel model(source.currentKeymap());
        const QString text = QStringLiteral("Hello, World! (1+1=2)\n\tend");
        const auto plan = planAndReplay(planner, source, text, model);
        QCOMPARE(plan.batches.size(), 1);
        QCOMPARE(bindingCount(plan), 0);
        QCOMPARE(plan.shiftKeyCode, 50u);
        QCOMPARE(plan.batches[0].strokes[0], (KeystrokePlanner::Stroke{43, true}));  // H
        QCOMPARE(plan.batches[0].strokes[1], (KeystrokePlanner::Stroke{26, false})); // e
    }

    void lineBreaksAreReturnAndCrLfIsOne() {
        CompiledKeymapSource source(QStringLiteral("us"));
        KeystrokePlanner planner;
        const auto plan = planner.plan(source.currentKeymap(), 0, u"a\r\nb\nc\rd\te");
        QList<uint32_t> codes;
        for (const auto& stroke : plan.batches[0].strokes)
            codes.append(stroke.keyCode);
        QCOMPARE(codes, QList<uint32_t>({38, 36, 56, 36, 54, 36, 40, 23, 26}));
    }

    void charactersTheLayoutLacksGoOnSpareKeys() {
        CompiledKeymapSource source(QStringLiteral("us"));
        KeystrokePlanner planner;
        MappingModel model(source.currentKeymap());
        const auto plan = planAndReplay(planner, source, QStringLiteral("café — 日本語 🙂"), model);
        QCOMPARE(plan.batches.size(), 1);
        QVERIFY(bindingCount(plan) >= 3); // é, —, 日, 本, 語, 🙂 share at most two per keycode
        for (const auto& binding : plan.batches[0].bindings) {
            QVERIFY(!binding.rebinds);
            QVERIFY(planner.spareKeyCodes().contains(binding.keyCode));
        }
    }

    void sameCharactersAgainNeedNoNewBinding() {
        CompiledKeymapSource source(QStringLiteral("us"));
        KeystrokePlanner planner;
        MappingModel model(source.currentKeymap());
        planAndReplay(planner, source, QStringLiteral("日本語"), model);
        // The server now shows our bindings; the model stands in for it.
        const auto again = planner.plan(source.currentKeymap(), 0, u"語本日");
        QCOMPARE(bindingCount(again), 0);
        QString problem;
        QCOMPARE(model.replay(again, &problem), keysymsOf(QStringLiteral("語本日")));
    }

    void otherLayoutsTypeTheirOwnCharacters() {
        CompiledKeymapSource source(QStringLiteral("fr"));
        KeystrokePlanner planner;
        MappingModel model(source.currentKeymap());
        const auto plan = planAndReplay(planner, source, QStringLiteral("été à Paris"), model);
        QCOMPARE(bindingCount(plan), 0);
        QCOMPARE(plan.batches[0].strokes[0], (KeystrokePlanner::Stroke{11, false})); // é
    }

    void activeGroupDecidesTheKeys() {
        CompiledKeymapSource source(QStringLiteral("us,de"));
        source.setGroup(1);
        KeystrokePlanner planner;
        MappingModel model(source.currentKeymap(), 1);
        const auto plan = planAndReplay(planner, source, QStringLiteral("zäh"), model);
        QCOMPARE(bindingCount(plan), 0);
        QCOMPARE(plan.batches[0].strokes[0].keyCode, 29u); // z sits on the Y key in German
    }

    void fewSpareKeysMeanBatchesThatEachReadRight() {
        CompiledKeymapSource source;
        QVERIFY(source.loadText(QString::fromLatin1(tinyKeymap)));
        KeystrokePlanner planner;
        planner.reconcile(source.currentKeymap());
        QCOMPARE(planner.spareKeyCodes(), QList<uint32_t>({11, 12, 13}));
        MappingModel model(source.currentKeymap());
        // Twenty different characters, three times over, through six slots.
        const QString text = cycled(QStringLiteral("ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓ"), 60) + QStringLiteral("abAB");
        const auto plan = planAndReplay(planner, source, text, model);
        QVERIFY(plan.batches.size() > 1);
        bool anyRebinding = false;
        for (const auto& batch : plan.batches)
            for (const auto& binding : batch.bindings)
                anyRebinding = anyRebinding || binding.rebinds;
        QVERIFY(anyRebinding);
    }

    void repeatedCharactersKeepTheirKeysAcrossBatches() {
        CompiledKeymapSource source;
        QVERIFY(source.loadText(QString::fromLatin1(tinyKeymap)));
        KeystrokePlanner planner;
        MappingModel model(source.currentKeymap());
        // é comes back all the time; giving up its slot would cost a rebinding each time.
        QString text;
        for (const QChar c : QStringLiteral("ÀÁÂÃÄÅÆÇÈ"))
            text += QStringLiteral("é") + c;
        const auto plan = planAndReplay(planner, source, text, model);
        QSet<std::pair<uint32_t, int>> placesOfE;
        for (const auto& batch : plan.batches)
            for (const auto& binding : batch.bindings)
                for (int level = 0; level < 2; ++level)
                    if (binding.keysyms[level] == XKB_KEY_eacute)
                        placesOfE.insert({binding.keyCode, level});
        QCOMPARE(placesOfE.size(), 1);
        QVERIFY(plan.batches.size() > 1);
    }

    void withoutShiftKeyOnlyPlainSlotsAreUsed() {
        CompiledKeymapSource source;
        QVERIFY(source.loadText(QString::fromLatin1(noShiftKeymap)));
        KeystrokePlanner planner;
        MappingModel model(source.currentKeymap());
        const auto plan = planAndReplay(planner, source, QStringLiteral("aAéü"), model);
        QCOMPARE(plan.shiftKeyCode, 0u);
        for (const auto& batch : plan.batches)
            for (const auto& stroke : batch.strokes)
                QVERIFY(!stroke.shift);
    }

    void charactersWithoutKeysymAreSkippedAndTheRestTyped() {
        CompiledKeymapSource source(QStringLiteral("us"));
        KeystrokePlanner planner;
        MappingModel model(source.currentKeymap());
        const QString text = QStringLiteral("ab\uFDD0cd\uFFFF");
        planner.reconcile(source.currentKeymap());
        const auto plan = planner.plan(source.currentKeymap(), 0, text);
        QCOMPARE(plan.skipped, QList<char32_t>({0xFDD0, 0xFFFF}));
        QCOMPARE(model.replay(plan, nullptr), keysymsOf(QStringLiteral("abcd")));
    }

    void bindingsTheKeymapNoLongerShowsAreForgotten() {
        CompiledKeymapSource source(QStringLiteral("us"));
        KeystrokePlanner planner;
        planner.reconcile(source.currentKeymap());
        planner.plan(source.currentKeymap(), 0, u"日");
        QCOMPARE(planner.boundKeyCodes().size(), 1);
        // A keymap freshly loaded (setxkbmap) has none of our symbols.
        QVERIFY(source.load(QStringLiteral("us")));
        planner.reconcile(source.currentKeymap());
        QVERIFY(planner.boundKeyCodes().isEmpty());
        const auto plan = planner.plan(source.currentKeymap(), 0, u"日");
        QCOMPARE(bindingCount(plan), 1);
    }
};

QTEST_GUILESS_MAIN(KeystrokePlannerTest)
#include "KeystrokePlannerTest.moc"
