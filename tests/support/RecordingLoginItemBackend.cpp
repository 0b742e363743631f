#include "RecordingLoginItemBackend.h"

std::optional<QString> RecordingLoginItemBackend::registerItem() {
    calls.append(true);
    registered = registered || !registerError;
    return registerError;
}

std::optional<QString> RecordingLoginItemBackend::unregisterItem() {
    calls.append(false);
    registered = registered && unregisterError;
    return unregisterError;
}
