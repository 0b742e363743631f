#!/usr/bin/python3
"""A GTK 3 text view used as a target.

--out FILE: after each change the view's whole text is written to FILE (replaced at once, so a
reader never sees half of it); the file is created, empty, when the window is up.
--report-length N (the latency benchmark): each time its text reaches N characters, prints the
CLOCK_MONOTONIC time in nanoseconds on a line, and empties itself.
--title TEXT: the window's title (two views in one test are told apart by it).
--wm-class NAME: the class part of the window's WM_CLASS (an application of that name)."""
import os
import sys
import time

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402


def option(name, default=None):
    return sys.argv[sys.argv.index(name) + 1] if name in sys.argv else default


def main():
    report_length = option("--report-length")
    out = option("--out")
    if option("--wm-class"):
        Gdk.set_program_class(option("--wm-class"))  # read when the window is realised
    window = Gtk.Window(title=option("--title", "Typolet GTK test target"))
    window.set_default_size(700, 400)
    view = Gtk.TextView()
    scrolled = Gtk.ScrolledWindow()
    scrolled.add(view)
    window.add(scrolled)
    buffer = view.get_buffer()

    def empty():
        buffer.set_text("")
        return False  # once

    def write_out():
        text = buffer.get_text(buffer.get_start_iter(), buffer.get_end_iter(), True)
        with open(out + ".part", "w", encoding="utf-8") as part:
            part.write(text)
        os.replace(out + ".part", out)

    def changed(_buffer):
        if out:
            write_out()
        if report_length and buffer.get_char_count() >= int(report_length):
            print(time.clock_gettime_ns(time.CLOCK_MONOTONIC), flush=True)
            GLib.idle_add(empty)

    buffer.connect("changed", changed)
    window.connect("destroy", Gtk.main_quit)
    window.show_all()
    if out:
        write_out()
    Gtk.main()


if __name__ == "__main__":
    main()
