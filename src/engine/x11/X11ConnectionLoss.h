#pragma once

// What happens when the X server goes away or refuses a request.
//
// Xlib's defaults print several lines and exit from deep inside a call; Typolet instead writes
// one clear line and ends. A refused request (for example a keyboard mapping change the server
// rejects) is written as one line and the work goes on.
class X11ConnectionLoss {
public:
    // Installs the Xlib handlers; call once the toolkit has opened its own connection, since it
    // installs handlers of its own.
    static void installHandlers();

    // Writes the line (once per process) and ends the process with status 1.
    [[noreturn]] static void end();

    static const char* const message;
};
