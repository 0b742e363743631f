// A Wayland application that records what it is typed: a window that takes the keyboard focus
// and reads each key with the keymap and modifiers the compositor hands it, as toolkits do.
// Prints "focused" once it has the focus; after every key it writes its whole text to the file
// named on the command line. BackSpace takes the last character away, Return adds a line break.
#include "xdg-shell-client-protocol.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace {
struct Target {
    const char* file = nullptr;
    wl_compositor* compositor = nullptr;
    wl_shm* shm = nullptr;
    wl_seat* seat = nullptr;
    xdg_wm_base* wmBase = nullptr;
    wl_surface* surface = nullptr;
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
    xkb_keymap* keymap = nullptr;
    xkb_state* state = nullptr;
    std::string text;
    bool configured = false;

    void save() const {
        FILE* out = std::fopen(file, "wb");
        if (!out)
            return;
        std::fwrite(text.data(), 1, text.size(), out);
        std::fclose(out);
    }
};

void global(void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
    auto* t = static_cast<Target*>(data);
    if (std::strcmp(interface, wl_compositor_interface.name) == 0)
        t->compositor = static_cast<wl_compositor*>(
            wl_registry_bind(registry, name, &wl_compositor_interface, 4));
    else if (std::strcmp(interface, wl_shm_interface.name) == 0)
        t->shm = static_cast<wl_shm*>(wl_registry_bind(registry, name, &wl_shm_interface, 1));
    else if (!t->seat && std::strcmp(interface, wl_seat_interface.name) == 0)
        t->seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 5));
    else if (std::strcmp(interface, xdg_wm_base_interface.name) == 0)
        t->wmBase =
            static_cast<xdg_wm_base*>(wl_registry_bind(registry, name, &xdg_wm_base_interface, 1));
}
void globalRemove(void*, wl_registry*, uint32_t) {}
const wl_registry_listener registryListener{global, globalRemove};

void ping(void*, xdg_wm_base* base, uint32_t serial) {
    xdg_wm_base_pong(base, serial);
}
const xdg_wm_base_listener wmBaseListener{ping};

void surfaceConfigure(void* data, xdg_surface* surface, uint32_t serial) {
    xdg_surface_ack_configure(surface, serial);
    static_cast<Target*>(data)->configured = true;
}
const xdg_surface_listener surfaceListener{surfaceConfigure};
void toplevelConfigure(void*, xdg_toplevel*, int32_t, int32_t, wl_array*) {}
void toplevelClose(void*, xdg_toplevel*) {}
const xdg_toplevel_listener toplevelListener{toplevelConfigure, toplevelClose};

void keymap(void* data, wl_keyboard*, uint32_t format, int32_t fd, uint32_t size) {
    auto* t = static_cast<Target*>(data);
    if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
        void* map = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
        if (map != MAP_FAILED) {
            xkb_keymap* next =
                xkb_keymap_new_from_string(t->context, static_cast<const char*>(map),
                                           XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
            munmap(map, size);
            if (next) {
                xkb_state_unref(t->state);
                xkb_keymap_unref(t->keymap);
                t->keymap = next;
                t->state = xkb_state_new(next);
            } else {
                std::fprintf(stderr, "a keymap did not compile\n");
            }
        }
    }
    close(fd);
}
void enter(void*, wl_keyboard*, uint32_t, wl_surface*, wl_array*) {
    std::printf("focused\n");
    std::fflush(stdout);
}
void leave(void*, wl_keyboard*, uint32_t, wl_surface*) {}
void key(void* data, wl_keyboard*, uint32_t, uint32_t, uint32_t code, uint32_t state) {
    auto* t = static_cast<Target*>(data);
    if (state != WL_KEYBOARD_KEY_STATE_PRESSED || !t->state)
        return;
    const xkb_keysym_t keysym = xkb_state_key_get_one_sym(t->state, code + 8);
    if (keysym == XKB_KEY_BackSpace) {
        while (!t->text.empty() && (t->text.back() & 0xc0) == 0x80)
            t->text.pop_back(); // continuation bytes of the last character
        if (!t->text.empty())
            t->text.pop_back();
    } else if (keysym == XKB_KEY_Return) {
        t->text += '\n';
    } else {
        char utf8[64] = {};
        xkb_state_key_get_utf8(t->state, code + 8, utf8, sizeof utf8);
        t->text += utf8;
    }
    t->save();
}
void modifiers(void* data, wl_keyboard*, uint32_t, uint32_t depressed, uint32_t latched,
               uint32_t locked, uint32_t group) {
    auto* t = static_cast<Target*>(data);
    if (t->state)
        xkb_state_update_mask(t->state, depressed, latched, locked, 0, 0, group);
}
void repeatInfo(void*, wl_keyboard*, int32_t, int32_t) {}
const wl_keyboard_listener keyboardListener{keymap, enter, leave, key, modifiers, repeatInfo};

void noBufferRelease(void*, wl_buffer*) {}
const wl_buffer_listener bufferListener{noBufferRelease};
} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUTPUT-FILE\n", argv[0]);
        return 2;
    }
    Target t;
    t.file = argv[1];
    t.save();
    wl_display* display = wl_display_connect(nullptr);
    if (!display) {
        std::fprintf(stderr, "no compositor\n");
        return 1;
    }
    wl_registry_add_listener(wl_display_get_registry(display), &registryListener, &t);
    wl_display_roundtrip(display);
    if (!t.compositor || !t.shm || !t.seat || !t.wmBase) {
        std::fprintf(stderr, "the compositor lacks a global this window needs\n");
        return 1;
    }
    xdg_wm_base_add_listener(t.wmBase, &wmBaseListener, &t);
    wl_keyboard_add_listener(wl_seat_get_keyboard(t.seat), &keyboardListener, &t);
    t.surface = wl_compositor_create_surface(t.compositor);
    xdg_surface* surface = xdg_wm_base_get_xdg_surface(t.wmBase, t.surface);
    xdg_surface_add_listener(surface, &surfaceListener, &t);
    xdg_toplevel* toplevel = xdg_surface_get_toplevel(surface);
    xdg_toplevel_add_listener(toplevel, &toplevelListener, &t);
    xdg_toplevel_set_title(toplevel, "text target");
    wl_surface_commit(t.surface);
    while (!t.configured && wl_display_dispatch(display) >= 0) {
    }
    // A white window, so that the compositor maps it and gives it the focus.
    constexpr int width = 200, height = 100, stride = width * 4;
    const int fd = memfd_create("window", MFD_CLOEXEC);
    if (fd < 0 || ftruncate(fd, stride * height) != 0)
        return 1;
    void* pixels = mmap(nullptr, stride * height, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    std::memset(pixels, 0xff, stride * height);
    wl_shm_pool* pool = wl_shm_create_pool(t.shm, fd, stride * height);
    wl_buffer* buffer =
        wl_shm_pool_create_buffer(pool, 0, width, height, stride, WL_SHM_FORMAT_XRGB8888);
    wl_buffer_add_listener(buffer, &bufferListener, &t);
    wl_surface_attach(t.surface, buffer, 0, 0);
    wl_surface_damage(t.surface, 0, 0, width, height);
    wl_surface_commit(t.surface);
    while (wl_display_dispatch(display) >= 0) {
    }
    return 0;
}
