#pragma once

#include <QObject>
#include <functional>

// Deferred work on the GUI thread's event loop. Everything in Typolet runs on that one
// thread; these two calls are how work is pushed "after the work in hand" or "later".
class MainQueue {
public:
    // Runs `work` on the main thread once the events queued before it are handled.
    // `context` ties the work's lifetime to an object: if it is destroyed first, the work is
    // dropped. Without a context the application object is used.
    static void async(std::function<void()> work, QObject* context = nullptr);

    // Runs `work` on the main thread `seconds` from now (negative counts as zero).
    static void after(double seconds, std::function<void()> work, QObject* context = nullptr);
};
