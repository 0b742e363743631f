#!/usr/bin/python3
"""A GTK 3 text view used as a target by the latency benchmark: with --report-length N it
prints, each time its text reaches N characters, the CLOCK_MONOTONIC time in nanoseconds on a
line, and empties itself."""
import sys
import time

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk  # noqa: E402


def main():
    report_length = int(sys.argv[sys.argv.index("--report-length") + 1])
    window = Gtk.Window(title="Typolet GTK test target")
    window.set_default_size(700, 400)
    view = Gtk.TextView()
    scrolled = Gtk.ScrolledWindow()
    scrolled.add(view)
    window.add(scrolled)
    buffer = view.get_buffer()

    def empty():
        buffer.set_text("")
        return False  # once

    def changed(_buffer):
        if buffer.get_char_count() >= report_length:
            print(time.clock_gettime_ns(time.CLOCK_MONOTONIC), flush=True)
            GLib.idle_add(empty)

    buffer.connect("changed", changed)
    window.connect("destroy", Gtk.main_quit)
    window.show_all()
    Gtk.main()


if __name__ == "__main__":
    main()
