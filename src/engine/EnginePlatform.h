#pragma once

class FocusedApplication;
class KeyMonitor;
class KeyTranslator;
class KeyboardOutput;
class PermissionProbe;
class PasswordFieldWatch;

// The platform pieces an engine works with, owned elsewhere (they live as long as the process).
// Any of them may be missing: the engine then writes why it cannot listen and stays idle.
struct EnginePlatform {
    PermissionProbe* permissions = nullptr;
    KeyMonitor* monitor = nullptr;
    KeyTranslator* translator = nullptr;
    KeyboardOutput* output = nullptr;
    FocusedApplication* focus = nullptr; // optional: without it no application is excluded
    PasswordFieldWatch* passwordField = nullptr; // optional: without it no password field is known
};
