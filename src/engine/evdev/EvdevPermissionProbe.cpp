#include "EvdevPermissionProbe.h"

#include "EvdevKeyboardFinder.h"
#include "InputDeviceAccess.h"

#include <algorithm>
#include <unistd.h>

EvdevPermissionProbe::EvdevPermissionProbe(InputDeviceAccess& access,
                                           const EvdevKeyboardFinder& keyboards,
                                           QString uinputPath)
    : m_access(access), m_keyboards(keyboards), m_uinputPath(std::move(uinputPath)) {}

bool EvdevPermissionProbe::canObserveKeys() {
    const auto nodes = m_keyboards.scan();
    return std::any_of(nodes.begin(), nodes.end(),
                       [](const EvdevKeyboardFinder::Node& node) { return node.usable(); });
}

QString EvdevPermissionProbe::observeProblem() const {
    return QStringLiteral("no keyboard under %1 can be read").arg(m_keyboards.folder());
}

QString EvdevPermissionProbe::postProblem() const {
    return QStringLiteral("%1 cannot be opened for writing").arg(m_uinputPath);
}

bool EvdevPermissionProbe::canPostKeys() {
    if (m_typesWithoutUinput)
        return true;
    // Opening the node creates nothing: a virtual device exists only once it is set up.
    const int fd = m_access.openForWriting(m_uinputPath);
    if (fd < 0)
        return false;
    ::close(fd);
    return true;
}
