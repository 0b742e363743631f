#include "RecordingAutostartBackend.h"

std::optional<QString> RecordingAutostartBackend::registerItem() {
    calls.append(true);
    registered = registered || !registerError;
    return registerError;
}

std::optional<QString> RecordingAutostartBackend::unregisterItem() {
    calls.append(false);
    registered = registered && unregisterError;
    return unregisterError;
}
