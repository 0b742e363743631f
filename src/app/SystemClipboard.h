#pragma once

#include "ClipboardSource.h"

class X11ClipboardLender;

// The desktop's clipboard: on X11 the CLIPBOARD selection, asked of the program that owns it at
// the moment a snippet is typed, through a reader that gives up on an owner that does not
// answer; elsewhere through Qt.
//
// After a paste Typolet itself holds the user's clipboard (see X11ClipboardLender); asking that
// owner through the X server would wait for an answer that only this thread can give, so the
// lender's copy is read instead.
class SystemClipboard : public ClipboardSource {
public:
    explicit SystemClipboard(const X11ClipboardLender* lender = nullptr,
                             ClipboardSource* reader = nullptr)
        : m_lender(lender), m_reader(reader) {}
    void readText(TextHandler done) override;

private:
    const X11ClipboardLender* m_lender;
    ClipboardSource* m_reader;
};
