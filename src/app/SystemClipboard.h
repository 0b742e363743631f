#pragma once

#include "ClipboardSource.h"

// The desktop's clipboard through Qt, for a Wayland session (X11 reads the selection's owner
// itself, see X11ClipboardReader). Without windows (no display) there is none to ask.
class SystemClipboard : public ClipboardSource {
public:
    void readText(TextHandler done) override;
};
