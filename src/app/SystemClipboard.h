#pragma once

#include "ClipboardSource.h"

class X11ClipboardLender;

// The desktop's clipboard through Qt (on X11 the CLIPBOARD selection, asked of the program that
// owns it at the moment a snippet is typed).
//
// After a paste Typolet itself holds the user's clipboard (see X11ClipboardLender); Qt would ask
// that owner through the X server and wait for an answer that only this thread can give, so
// the lender's copy is read instead.
class SystemClipboard : public ClipboardSource {
public:
    explicit SystemClipboard(const X11ClipboardLender* lender = nullptr) : m_lender(lender) {}
    std::optional<QString> text() override;

private:
    const X11ClipboardLender* m_lender;
};
