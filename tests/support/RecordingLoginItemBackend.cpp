#include "RecordingLoginItemBackend.h"

std::optional<QString> RecordingLoginItemBackend::registerItem() {
    calls.append(true);
    return registerError;
}

std::optional<QString> RecordingLoginItemBackend::unregisterItem() {
    calls.append(false);
    return unregisterError;
}
