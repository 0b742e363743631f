#pragma once

#include "InputBackend.h"

#include <QCoreApplication>

class EvdevEngineBackend;
class KeymapSource;
class QTextStream;

// `typolet --check-input`: prints which backend Typolet would use here and what it can do with
// it, so a user can see at a glance what is missing. The exit status is 0 when keys can be both
// seen and typed, 1 otherwise.
class InputCheck {
    Q_DECLARE_TR_FUNCTIONS(InputCheck)
public:
    static int run(QTextStream& out, const InputBackend::Choice& backend);

private:
    static bool evdev(QTextStream& out, EvdevEngineBackend& engine);
    static bool x11(QTextStream& out);
    static QString yesNo(bool yes);
    // Whether the session bus has a portal that gives a keyboard (RemoteDesktop).
    static bool hasRemoteDesktopPortal();
    // The keymap's layouts by their names ("English (US), German"), or why there is none.
    static QString layouts(KeymapSource& source);
};
