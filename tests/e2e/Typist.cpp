// A person at the keyboard, for the end-to-end tests: presses keys by keycode through XTest,
// exactly as a keyboard would (no modifiers added behind the test's back), at a set pace.
//
//   typolet_typist [--own-keyboard] [--interval MS] ACTION...
//
//   text:STRING  types each character with the key (and Shift) that the layout gives it
//   key:KEYSYM   presses and releases the key that carries KEYSYM (first level)
//   down:KEYSYM  presses it;  up:KEYSYM  releases it
//   wait:MS      does nothing for MS milliseconds
//
// --own-keyboard types through a keyboard of its own (a second master device with its own
// XTEST slave), focused on the window that has the focus now. Typolet's own output goes
// through the core keyboard's XTEST slave; a typist on that same device could not be told
// from Typolet's output, as a person's real keyboard always can.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {
Display* display = nullptr;
int interval = 20;

void pause(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

void post(KeyCode code, bool down) {
    XTestFakeKeyEvent(display, code, down, CurrentTime);
    XFlush(display);
}

KeyCode codeOf(const char* name) {
    const KeySym sym = XStringToKeysym(name);
    const KeyCode code = sym == NoSymbol ? 0 : XKeysymToKeycode(display, sym);
    if (code == 0) {
        std::fprintf(stderr, "typist: no key for %s\n", name);
        std::exit(2);
    }
    return code;
}

// One press and release, half the interval each, like fingers that overlap no keys.
void tap(KeyCode code) {
    post(code, true);
    pause(interval / 2);
    post(code, false);
    pause(interval - interval / 2);
}

void typeText(const char* text) {
    const KeyCode shift = codeOf("Shift_L");
    for (const char* c = text; *c; ++c) {
        // Printable ASCII characters are their own keysyms.
        const KeySym sym = static_cast<KeySym>(static_cast<unsigned char>(*c));
        const KeyCode code = XKeysymToKeycode(display, sym);
        if (code == 0) {
            std::fprintf(stderr, "typist: no key types '%c'\n", *c);
            std::exit(2);
        }
        const bool shifted = XkbKeycodeToKeysym(display, code, 0, 0) != sym;
        if (shifted)
            post(shift, true);
        tap(code);
        if (shifted)
            post(shift, false);
    }
}

int findDevice(const char* name) {
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(display, XIAllDevices, &count);
    int id = 0;
    for (int i = 0; i < count && id == 0; ++i) {
        if (std::strcmp(devices[i].name, name) == 0)
            id = devices[i].deviceid;
    }
    XIFreeDeviceInfo(devices);
    return id;
}

// A second master pair named "Typist", made this client's own, with the keyboard focus on
// the window the core keyboard is focused on.
void useOwnKeyboard() {
    int opcode = 0, event = 0, error = 0, major = 2, minor = 2;
    if (!XQueryExtension(display, "XInputExtension", &opcode, &event, &error) ||
        XIQueryVersion(display, &major, &minor) != Success) {
        std::fprintf(stderr, "typist: no XInput 2\n");
        std::exit(2);
    }
    // The core keyboard's focus, read while this client still speaks for the core pair.
    Window focus = None;
    int revert = 0;
    XGetInputFocus(display, &focus, &revert);
    if (findDevice("Typist keyboard") == 0) {
        XIAddMasterInfo add{};
        add.type = XIAddMaster;
        add.name = const_cast<char*>("Typist");
        add.send_core = True;
        add.enable = True;
        XIChangeHierarchy(display, reinterpret_cast<XIAnyHierarchyChangeInfo*>(&add), 1);
        XSync(display, False);
    }
    const int pointer = findDevice("Typist pointer");
    const int keyboard = findDevice("Typist keyboard");
    if (pointer == 0 || keyboard == 0) {
        std::fprintf(stderr, "typist: could not create its own keyboard\n");
        std::exit(2);
    }
    XISetClientPointer(display, None, pointer);
    if (focus != None && focus != PointerRoot)
        XISetFocus(display, keyboard, focus, CurrentTime);
    XSync(display, False);
}
} // namespace

int main(int argc, char* argv[]) {
    display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "typist: no display\n");
        return 2;
    }
    int first = 1;
    for (; first < argc && std::strncmp(argv[first], "--", 2) == 0; ++first) {
        if (std::strcmp(argv[first], "--own-keyboard") == 0)
            useOwnKeyboard();
        else if (std::strcmp(argv[first], "--interval") == 0 && first + 1 < argc)
            interval = std::atoi(argv[++first]);
    }
    for (int i = first; i < argc; ++i) {
        const std::string action = argv[i];
        const std::string::size_type colon = action.find(':');
        const std::string verb = action.substr(0, colon);
        const std::string value = colon == std::string::npos ? std::string() : action.substr(colon + 1);
        if (verb == "text")
            typeText(value.c_str());
        else if (verb == "key")
            tap(codeOf(value.c_str()));
        else if (verb == "down")
            post(codeOf(value.c_str()), true);
        else if (verb == "up")
            post(codeOf(value.c_str()), false);
        else if (verb == "wait")
            pause(std::atoi(value.c_str()));
        else {
            std::fprintf(stderr, "typist: unknown action %s\n", argv[i]);
            return 2;
        }
    }
    XSync(display, False);
    XCloseDisplay(display);
    return 0;
}
