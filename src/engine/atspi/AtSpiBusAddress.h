#pragma once

#include <QString>
#include <functional>

class QObject;

// Finds the address of the desktop's accessibility bus (AT-SPI 2), on which applications say
// where the focus is and answer questions about their widgets.
class AtSpiBusAddress {
public:
    // `found` gets the address, or an empty one and why there is none; at once or later from
    // the event loop, and not at all when `context` is gone by then.
    static void find(QObject* context,
                     std::function<void(const QString& address, const QString& whyNot)> found);
};
