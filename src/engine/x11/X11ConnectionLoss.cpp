#include "X11ConnectionLoss.h"

#include "Logging.h"

#include <X11/Xlib.h>
#include <atomic>
#include <cstdlib>

const char* const X11ConnectionLoss::message =
    "Lost the connection to the X display; Typolet has stopped.";

namespace {
int onIoError(Display*) { X11ConnectionLoss::end(); }

int onRequestError(Display* display, XErrorEvent* error) {
    char text[160] = {};
    XGetErrorText(display, error->error_code, text, sizeof text);
    qCWarning(lcEngine).noquote() << QStringLiteral("X11 request %1.%2 refused: %3")
                          .arg(error->request_code)
                          .arg(error->minor_code)
                          .arg(QString::fromLocal8Bit(text));
    return 0;
}
} // namespace

void X11ConnectionLoss::installHandlers() {
    XSetIOErrorHandler(onIoError);
    XSetErrorHandler(onRequestError);
}

void X11ConnectionLoss::end() {
    static std::atomic<bool> written{false};
    if (!written.exchange(true))
        qCCritical(lcEngine).noquote() << QString::fromUtf8(message);
    // Nothing useful can run without the server, and destructors would talk to it.
    std::_Exit(1);
}
