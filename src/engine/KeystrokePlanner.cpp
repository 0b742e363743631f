#include "KeystrokePlanner.h"

#include <QSet>
#include <limits>
#include <optional>
#include <xkbcommon/xkbcommon.h>

void KeystrokePlanner::reconcile(xkb_keymap* keymap) {
    QList<uint32_t> spares = emptyKeyCodes(keymap);
    for (auto it = m_keysymOfSlot.begin(); it != m_keysymOfSlot.end();) {
        const uint32_t code = it.key() / 2;
        const xkb_keysym_t* syms = nullptr;
        const bool stillOurs =
            keymap && xkb_keymap_num_layouts_for_key(keymap, code) > 0 &&
            xkb_keymap_key_get_syms_by_level(keymap, code, 0, it.key() % 2, &syms) == 1 &&
            syms[0] == it.value();
        if (stillOurs) {
            if (!spares.contains(code))
                spares.append(code);
            ++it;
        } else {
            m_slotOfKeysym.remove(it.value());
            it = m_keysymOfSlot.erase(it);
        }
    }
    std::sort(spares.begin(), spares.end());
    // Keep the usage order of slots we already knew; new ones count as least recently used.
    QList<uint32_t> order;
    for (const uint32_t code : spares)
        for (uint32_t level = 0; level < 2; ++level)
            if (!m_leastRecentlyUsed.contains(slotOf(code, level)))
                order.append(slotOf(code, level));
    for (const uint32_t slot : std::as_const(m_leastRecentlyUsed))
        if (std::binary_search(spares.cbegin(), spares.cend(), slot / 2))
            order.append(slot);
    m_spares = std::move(spares);
    m_leastRecentlyUsed = std::move(order);
}

void KeystrokePlanner::forgetBindings() {
    m_keysymOfSlot.clear();
    m_slotOfKeysym.clear();
}

QList<uint32_t> KeystrokePlanner::boundKeyCodes() const {
    QList<uint32_t> codes;
    for (auto it = m_keysymOfSlot.cbegin(); it != m_keysymOfSlot.cend(); ++it)
        if (!codes.contains(it.key() / 2))
            codes.append(it.key() / 2);
    std::sort(codes.begin(), codes.end());
    return codes;
}

KeystrokePlanner::Binding KeystrokePlanner::bindingFor(uint32_t code) const {
    Binding binding;
    binding.keyCode = code;
    binding.keysyms[0] = m_keysymOfSlot.value(slotOf(code, 0), 0);
    binding.keysyms[1] = m_keysymOfSlot.value(slotOf(code, 1), 0);
    return binding;
}

QList<uint32_t> KeystrokePlanner::emptyKeyCodes(xkb_keymap* keymap) {
    QList<uint32_t> codes;
    if (!keymap)
        return codes;
    // X keycodes are 8..255; the XTest and core protocols cannot post others.
    const uint32_t first = std::max<uint32_t>(xkb_keymap_min_keycode(keymap), 8);
    const uint32_t last = std::min<uint32_t>(xkb_keymap_max_keycode(keymap), 255);
    for (uint32_t code = first; code <= last; ++code) {
        bool empty = true;
        const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(keymap, code);
        for (xkb_layout_index_t layout = 0; layout < layouts && empty; ++layout) {
            const xkb_level_index_t levels = xkb_keymap_num_levels_for_key(keymap, code, layout);
            for (xkb_level_index_t level = 0; level < levels && empty; ++level) {
                const xkb_keysym_t* syms = nullptr;
                if (xkb_keymap_key_get_syms_by_level(keymap, code, layout, level, &syms) > 0)
                    empty = false;
            }
        }
        if (empty)
            codes.append(code);
    }
    return codes;
}

uint32_t KeystrokePlanner::keysymFor(char32_t codePoint) {
    if (codePoint == U'\n' || codePoint == U'\r')
        return XKB_KEY_Return;
    if (codePoint == U'\t')
        return XKB_KEY_Tab;
    return xkb_utf32_to_keysym(codePoint);
}

QHash<uint32_t, KeystrokePlanner::Stroke>
KeystrokePlanner::layoutKeys(xkb_keymap* keymap, uint32_t group, uint32_t& shiftKeyCode) const {
    QHash<uint32_t, Stroke> keys;
    shiftKeyCode = 0;
    const QSet<uint32_t> spares(m_spares.cbegin(), m_spares.cend());
    const uint32_t first = std::max<uint32_t>(xkb_keymap_min_keycode(keymap), 8);
    const uint32_t last = std::min<uint32_t>(xkb_keymap_max_keycode(keymap), 255);
    const xkb_mod_index_t shiftIndex = xkb_keymap_mod_get_index(keymap, XKB_MOD_NAME_SHIFT);
    const xkb_mod_mask_t shiftMask =
        shiftIndex == XKB_MOD_INVALID ? 0 : (xkb_mod_mask_t(1) << shiftIndex);

    // Level 0 first over all keys, then the Shift level, so a plain key always wins.
    for (xkb_level_index_t level = 0; level < 2; ++level) {
        for (uint32_t code = first; code <= last; ++code) {
            if (spares.contains(code))
                continue; // their symbols are ours and may change at any batch
            const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(keymap, code);
            if (layouts == 0)
                continue;
            const xkb_layout_index_t layout = group % layouts;
            if (level >= xkb_keymap_num_levels_for_key(keymap, code, layout))
                continue;
            const xkb_keysym_t* syms = nullptr;
            if (xkb_keymap_key_get_syms_by_level(keymap, code, layout, level, &syms) != 1)
                continue;
            if (level == 0 && syms[0] == XKB_KEY_Shift_L && shiftKeyCode == 0)
                shiftKeyCode = code;
            if (level == 1) {
                // Only levels that Shift alone reaches; AltGr levels go through spare keycodes.
                xkb_mod_mask_t masks[8] = {};
                const size_t count =
                    xkb_keymap_key_get_mods_for_level(keymap, code, layout, level, masks, 8);
                bool byShift = false;
                for (size_t i = 0; i < count; ++i)
                    byShift = byShift || masks[i] == shiftMask;
                if (!byShift)
                    continue;
            }
            if (!keys.contains(syms[0]))
                keys.insert(syms[0], Stroke{code, level == 1});
        }
    }
    if (shiftKeyCode == 0) {
        // Without a key to hold, the Shift level cannot be reached.
        for (auto it = keys.begin(); it != keys.end();)
            it = it->shift ? keys.erase(it) : std::next(it);
    }
    return keys;
}

KeystrokePlanner::Plan KeystrokePlanner::plan(xkb_keymap* keymap, uint32_t group,
                                              QStringView text) {
    Plan plan;
    plan.batches.append(Batch{});
    if (!keymap)
        return plan;
    const QHash<uint32_t, Stroke> keys = layoutKeys(keymap, group, plan.shiftKeyCode);

    // The keysyms to type, in order; 0 marks characters no keysym expresses.
    QList<uint32_t> keysyms;
    QList<char32_t> codePoints;
    const QList<uint> all = text.toUcs4();
    for (qsizetype i = 0; i < all.size(); ++i) {
        if (all[i] == U'\n' && i > 0 && all[i - 1] == U'\r')
            continue; // CR LF is one line break
        keysyms.append(keysymFor(all[i]));
        codePoints.append(all[i]);
    }
    // For each position, where the same keysym is needed next (or never): when a spare must be
    // rebound, the binding needed furthest ahead is the one to give up.
    constexpr qsizetype never = std::numeric_limits<qsizetype>::max();
    QList<qsizetype> nextUse(keysyms.size(), never);
    QHash<uint32_t, qsizetype> upcoming;
    for (qsizetype i = keysyms.size() - 1; i >= 0; --i) {
        nextUse[i] = upcoming.value(keysyms[i], never);
        upcoming.insert(keysyms[i], i);
    }
    QHash<uint32_t, qsizetype> nextUseOfKeysym = upcoming; // first use of each keysym

    QSet<uint32_t> usedInBatch; // keycodes pressed in the current batch
    for (qsizetype i = 0; i < keysyms.size(); ++i) {
        const uint32_t keysym = keysyms[i];
        nextUseOfKeysym.insert(keysym, nextUse[i]);
        if (keysym == XKB_KEY_NoSymbol) {
            plan.skipped.append(codePoints[i]);
            continue;
        }
        if (const auto key = keys.constFind(keysym); key != keys.cend()) {
            plan.batches.last().strokes.append(*key);
            continue;
        }
        if (m_spares.isEmpty()) {
            plan.skipped.append(codePoints[i]);
            continue;
        }
        auto found = m_slotOfKeysym.constFind(keysym);
        uint32_t slot = found == m_slotOfKeysym.cend() ? 0 : *found;
        if (found == m_slotOfKeysym.cend()) {
            // A slot of a keycode not pressed in this batch: an empty one if any, otherwise the
            // one whose character is needed furthest ahead, the least recently used among equals.
            const auto pick = [&]() -> std::optional<uint32_t> {
                std::optional<uint32_t> choice;
                qsizetype choiceNextUse = -1;
                for (const uint32_t candidate : std::as_const(m_leastRecentlyUsed)) {
                    const uint32_t code = candidate / 2;
                    if (usedInBatch.contains(code))
                        continue;
                    // The Shift slot needs a Shift key, and a plain slot in use beside it.
                    if (candidate % 2 == 1 &&
                        (plan.shiftKeyCode == 0 || !m_keysymOfSlot.contains(slotOf(code, 0))))
                        continue;
                    const auto bound = m_keysymOfSlot.constFind(candidate);
                    if (bound == m_keysymOfSlot.cend())
                        return candidate;
                    const qsizetype candidateNextUse = nextUseOfKeysym.value(*bound, never);
                    if (candidateNextUse > choiceNextUse) {
                        choice = candidate;
                        choiceNextUse = candidateNextUse;
                    }
                }
                return choice;
            };
            std::optional<uint32_t> choice = pick();
            if (!choice) {
                // Every spare is pressed in this batch: the next rebinding starts a new one.
                plan.batches.append(Batch{});
                usedInBatch.clear();
                choice = pick();
            }
            slot = *choice;
            const uint32_t previous = m_keysymOfSlot.value(slot, 0);
            if (previous != 0)
                m_slotOfKeysym.remove(previous);
            m_keysymOfSlot.insert(slot, keysym);
            m_slotOfKeysym.insert(keysym, slot);
            // One entry per keycode and batch, holding both of its slots as they end up.
            QList<Binding>& bindings = plan.batches.last().bindings;
            qsizetype index = 0;
            while (index < bindings.size() && bindings[index].keyCode != slot / 2)
                ++index;
            if (index == bindings.size())
                bindings.append(Binding{});
            const bool rebinds = bindings[index].rebinds || previous != 0;
            bindings[index] = bindingFor(slot / 2);
            bindings[index].rebinds = rebinds;
        }
        m_leastRecentlyUsed.removeOne(slot);
        m_leastRecentlyUsed.append(slot);
        usedInBatch.insert(slot / 2);
        plan.batches.last().strokes.append(Stroke{slot / 2, slot % 2 == 1});
    }
    return plan;
}
