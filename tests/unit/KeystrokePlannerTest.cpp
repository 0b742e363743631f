// Which keys type a text: checked by replaying each plan on a model of the keyboard mapping.
#include "KeystrokePlanner.h"
#include "CompiledKeymapSource.h"

#include <QtTest>
#include <xkbcommon/xkbcommon.h>

using Planner = KeystrokePlanner;

namespace {
// A tiny keyboard: a and b, keycodes 11 to 13 with nothing on them, and Shift if asked.
QString tinyKeymap(bool withShift) {
    return QStringLiteral(R"(xkb_keymap {
        xkb_keycodes { minimum = 8; maximum = 13; <LFSH> = 8; <AC01> = 9; <AC02> = 10;
                       <I11> = 11; <I12> = 12; <I13> = 13; };
        xkb_types { include "complete" };
        xkb_compat { include "complete" };
        xkb_symbols { key <AC01> { [ a, A ] }; key <AC02> { [ b, B ] }; %1 };
    };)")
        .arg(withShift ? "key <LFSH> { [ Shift_L ] }; modifier_map Shift { <LFSH> };" : "");
}

// What typing `text` must produce (without CR: line breaks are checked on their own).
QList<uint32_t> keysymsOf(const QString& text) {
    QList<uint32_t> keysyms;
    for (const char32_t c : text.toUcs4())
        keysyms.append(c == '\n' ? XKB_KEY_Return
                                 : (c == '\t' ? XKB_KEY_Tab : xkb_utf32_to_keysym(c)));
    return keysyms;
}

int bindingCount(const Planner::Plan& plan) {
    int count = 0;
    for (const auto& batch : plan.batches)
        count += int(batch.bindings.size());
    return count;
}

// A planner over a keymap, and the server's mapping as its plans change it.
struct Rig {
    CompiledKeymapSource source;
    Planner planner;
    QHash<uint32_t, std::pair<uint32_t, uint32_t>> bound; // spare keycode -> plain, Shift

    // `layouts` as setxkbmap takes them, or the text of a whole keymap.
    explicit Rig(const QString& layouts = "us") {
        if (!(layouts.startsWith("xkb_keymap") ? source.loadText(layouts) : source.load(layouts)))
            qFatal("cannot compile %s", qPrintable(layouts));
        reconcile();
    }
    void reconcile() { planner.reconcile(source.currentKeymap()); }
    Planner::Plan plan(QStringView text) {
        return planner.plan(source.currentKeymap(), source.currentGroup(), text);
    }

    // Replays `plan`: bindings first, then the strokes of each batch. It must type exactly
    // `text` and flag every binding that changes a slot in use.
    void expectTyped(const Planner::Plan& plan, const QString& text) {
        QList<uint32_t> typed;
        for (const auto& batch : plan.batches) {
            for (const auto& binding : batch.bindings) {
                const auto old = bound.value(binding.keyCode);
                QCOMPARE(binding.rebinds, (old.first && old.first != binding.keysyms[0]) ||
                                              (old.second && old.second != binding.keysyms[1]));
                bound[binding.keyCode] = {binding.keysyms[0], binding.keysyms[1]};
            }
            for (const auto& stroke : batch.strokes)
                typed.append(keysymOf(stroke));
        }
        QCOMPARE(typed, keysymsOf(text));
    }

    uint32_t keysymOf(const Planner::Stroke& stroke) {
        if (bound.contains(stroke.keyCode)) {
            const auto syms = bound.value(stroke.keyCode);
            return stroke.shift && syms.second ? syms.second : syms.first;
        }
        xkb_keymap* keymap = source.currentKeymap();
        const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(keymap, stroke.keyCode);
        const xkb_keysym_t* syms = nullptr;
        if (layouts == 0 || xkb_keymap_key_get_syms_by_level(keymap, stroke.keyCode,
                                                             source.currentGroup() % layouts,
                                                             stroke.shift ? 1 : 0, &syms) != 1)
            return 0;
        return syms[0];
    }
};
} // namespace

class KeystrokePlannerTest : public QObject {
    Q_OBJECT

private slots:
    void layoutCharactersUseTheirKeysWithoutBindingAndOthersAreSkipped() {
        Rig rig;
        const QString text = QStringLiteral("Hello, World! (1+1=2)\n\tend");
        const auto plan = rig.plan(text);
        rig.expectTyped(plan, text);
        QCOMPARE(plan.batches.size(), 1);
        QCOMPARE(bindingCount(plan), 0);
        QCOMPARE(plan.shiftKeyCode, 50u);
        // CR LF is one Return; CR alone and LF alone are one each.
        const auto lines = rig.plan(u"a\r\nb\nc\rd\te");
        QList<uint32_t> codes;
        for (const auto& stroke : lines.batches[0].strokes)
            codes.append(stroke.keyCode);
        QCOMPARE(codes, QList<uint32_t>({38, 36, 56, 36, 54, 36, 40, 23, 26}));
        // Characters no keysym expresses are skipped and the rest typed.
        const auto skipping = rig.plan(u"ab\uFDD0cd\uFFFF");
        QCOMPARE(skipping.skipped, QList<char32_t>({0xFDD0, 0xFFFF}));
        rig.expectTyped(skipping, QStringLiteral("abcd"));
    }

    void otherLayoutsAndGroupsTypeTheirOwnCharacters() {
        for (const auto& [layouts, group, text] :
             {std::tuple("fr", 0u, "été à Paris"), std::tuple("us,de", 1u, "zäh")}) {
            Rig rig(layouts);
            rig.source.setGroup(group);
            const auto plan = rig.plan(QString(text));
            rig.expectTyped(plan, text);
            QCOMPARE(bindingCount(plan), 0);
        }
    }

    void charactersTheLayoutLacksGoOnSpareKeysAndStayThere() {
        Rig rig;
        const QString text = QStringLiteral("café — 日本語 🙂");
        const auto plan = rig.plan(text);
        rig.expectTyped(plan, text);
        QCOMPARE(plan.batches.size(), 1);
        QVERIFY(bindingCount(plan) >= 3); // six characters, at most two per keycode
        for (const auto& binding : plan.batches[0].bindings)
            QVERIFY(rig.planner.spareKeyCodes().contains(binding.keyCode));
        // The model stands in for the server, whose keymap now shows the bindings.
        const auto again = rig.plan(u"語本日");
        QCOMPARE(bindingCount(again), 0);
        rig.expectTyped(again, QStringLiteral("語本日"));
    }

    void fewSpareKeysMeanBatchesThatEachReadRight() {
        Rig rig(tinyKeymap(true));
        QCOMPARE(rig.planner.spareKeyCodes(), QList<uint32_t>({11, 12, 13}));
        // Twenty different characters, three times over, through six slots.
        const QString alphabet = QStringLiteral("ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓ");
        const QString text = alphabet + alphabet + alphabet + QStringLiteral("abAB");
        const auto plan = rig.plan(text);
        rig.expectTyped(plan, text);
        // Slots must be rebound, never within the batch that pressed them: the replay checks both.
        QVERIFY(plan.batches.size() > 1);
    }

    void repeatedCharactersKeepTheirKeysAcrossBatches() {
        Rig rig(tinyKeymap(true));
        // é comes back all the time; giving up its slot would cost a rebinding each time.
        QString text;
        for (const QChar c : QStringLiteral("ÀÁÂÃÄÅÆÇÈ"))
            text += QStringLiteral("é") + c;
        const auto plan = rig.plan(text);
        rig.expectTyped(plan, text);
        QVERIFY(plan.batches.size() > 1);
        QSet<std::pair<uint32_t, int>> placesOfE;
        for (const auto& batch : plan.batches)
            for (const auto& binding : batch.bindings)
                for (int level = 0; level < 2; ++level)
                    if (binding.keysyms[level] == XKB_KEY_eacute)
                        placesOfE.insert({binding.keyCode, level});
        QCOMPARE(placesOfE.size(), 1);
    }

    void withoutShiftKeyOnlyPlainSlotsAreUsed() {
        Rig rig(tinyKeymap(false));
        const auto plan = rig.plan(u"aAéü");
        rig.expectTyped(plan, QStringLiteral("aAéü"));
        QCOMPARE(plan.shiftKeyCode, 0u);
        for (const auto& batch : plan.batches)
            for (const auto& stroke : batch.strokes)
                QVERIFY(!stroke.shift);
    }

    void bindingsTheKeymapNoLongerShowsAreForgotten() {
        Rig rig;
        rig.plan(u"日");
        QCOMPARE(rig.planner.boundKeyCodes().size(), 1);
        // A keymap freshly loaded (setxkbmap) has none of our symbols.
        QVERIFY(rig.source.load(QStringLiteral("us")));
        rig.reconcile();
        QVERIFY(rig.planner.boundKeyCodes().isEmpty());
        QCOMPARE(bindingCount(rig.plan(u"日")), 1);
    }
};

QTEST_GUILESS_MAIN(KeystrokePlannerTest)
#include "KeystrokePlannerTest.moc"
