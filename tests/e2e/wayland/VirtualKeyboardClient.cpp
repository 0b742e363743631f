// Gives a headless compositor's seat a keyboard with the layout named on the command line
// ("us,ru" for two), through the virtual keyboard protocol, then keeps it until standard input
// closes. Prints "ready" once the compositor has the keymap. A line "mods D L K G" on standard
// input sets the keyboard's held, latched and locked modifiers and its group, as a user's
// keys would; "ok" follows once the compositor has them.
#include "virtual-keyboard-unstable-v1-client-protocol.h"

#include <cstdio>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace {
wl_seat* seat = nullptr;
zwp_virtual_keyboard_manager_v1* manager = nullptr;

void global(void*, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
    if (!seat && std::strcmp(interface, wl_seat_interface.name) == 0)
        seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
    else if (std::strcmp(interface, zwp_virtual_keyboard_manager_v1_interface.name) == 0)
        manager = static_cast<zwp_virtual_keyboard_manager_v1*>(
            wl_registry_bind(registry, name, &zwp_virtual_keyboard_manager_v1_interface, 1));
}
void globalRemove(void*, wl_registry*, uint32_t) {}
const wl_registry_listener registryListener{global, globalRemove};
} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s LAYOUT\n", argv[0]);
        return 2;
    }
    wl_display* display = wl_display_connect(nullptr);
    if (!display) {
        std::fprintf(stderr, "no compositor\n");
        return 1;
    }
    wl_registry_add_listener(wl_display_get_registry(display), &registryListener, nullptr);
    wl_display_roundtrip(display);
    if (!seat || !manager) {
        std::fprintf(stderr, "the compositor offers no seat or no virtual keyboards\n");
        return 1;
    }
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
    const xkb_rule_names names{"evdev", "pc105", argv[1], "", ""};
    xkb_keymap* keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (!keymap) {
        std::fprintf(stderr, "layout %s does not compile\n", argv[1]);
        return 1;
    }
    char* text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    const size_t size = std::strlen(text) + 1;
    const int fd = memfd_create("keymap", MFD_CLOEXEC);
    if (fd < 0 || write(fd, text, size) != ssize_t(size))
        return 1;
    zwp_virtual_keyboard_v1* keyboard =
        zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager, seat);
    zwp_virtual_keyboard_v1_keymap(keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, fd, uint32_t(size));
    if (wl_display_roundtrip(display) < 0)
        return 1;
    std::printf("ready\n");
    std::fflush(stdout);
    char line[128];
    while (std::fgets(line, sizeof line, stdin)) {
        unsigned depressed = 0, latched = 0, locked = 0, group = 0;
        if (std::sscanf(line, "mods %u %u %u %u", &depressed, &latched, &locked, &group) == 4) {
            zwp_virtual_keyboard_v1_modifiers(keyboard, depressed, latched, locked, group);
            wl_display_roundtrip(display);
            std::printf("ok\n");
            std::fflush(stdout);
        }
    }
    zwp_virtual_keyboard_v1_destroy(keyboard);
    wl_display_roundtrip(display);
    wl_display_disconnect(display);
    return 0;
}
