#pragma once

#include "ClipboardSource.h"

// Gives the text the test put in it (none: empty, or only an image) and counts the questions.
class FakeClipboard : public ClipboardSource {
public:
    std::optional<QString> text() override {
        ++reads;
        return content;
    }

    std::optional<QString> content;
    int reads = 0;
};
