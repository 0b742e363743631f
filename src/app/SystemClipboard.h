#pragma once

#include "ClipboardSource.h"

// The desktop's clipboard through Qt (on X11 the CLIPBOARD selection, asked of the program that
// owns it at the moment a snippet is typed).
class SystemClipboard : public ClipboardSource {
public:
    std::optional<QString> text() override;
};
