#pragma once

#include "KeyboardOutput.h"

#include <QList>
#include <QString>

// Records what the engine asked the keyboard to do, in order.
class RecordingKeyboardOutput : public KeyboardOutput {
public:
    struct Call {
        enum Kind { Delete, Insert } kind;
        int count = 0;
        QString text;
        friend bool operator==(const Call&, const Call&) = default;
    };

    void deleteCharacters(int count) override;
    void insertText(const QString& text) override;

    static Call deletion(int count) { return {Call::Delete, count, {}}; }
    static Call insertion(const QString& text) { return {Call::Insert, 0, text}; }

    QList<Call> calls;
};
