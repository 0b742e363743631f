#pragma once

#include "ExpansionAction.h"

#include <QList>
#include <cstdint>

// The keysyms that type an expansion where any keysym can be sent (a keymap of our own, or a
// desktop that takes keysyms): BackSpace and Left presses as they are, then every character,
// a line break as Return and a tab as Tab. A text meant for the clipboard is typed as well.
// Control characters have no key and are left out.
QList<uint32_t> expansionKeysyms(const Expansion& actions);
