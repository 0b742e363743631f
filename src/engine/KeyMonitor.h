#pragma once

#include <cstdint>
#include <functional>

// Watches the keys the user presses in every application without taking them: each key-down
// is reported with its key code, and every key still reaches the focused application unchanged.
class KeyMonitor {
public:
    using KeyDownHandler = std::function<void(uint32_t keyCode)>;

    virtual ~KeyMonitor() = default;

    // Starts reporting key-downs to `handler` on the main thread. False when the monitor could
    // not be set up; nothing is reported then.
    virtual bool start(KeyDownHandler handler) = 0;

    // Drops every key-down the system has produced up to now and not yet reported. Called right
    // after our own typing, so the typed content never comes back as if the user had typed it.
    virtual void discardPendingKeys() = 0;
};
