#pragma once

#include "PermissionProbe.h"

#include <QString>

class EvdevKeyboardFinder;
class InputDeviceAccess;

// Answers from the kernel's device nodes. Keys can be observed when at least one of the user's
// keyboards can be read, and posted when the uinput node can be opened for writing (which is
// what creating the virtual keyboard needs). Both are granted per device node, by the udev
// rule Typolet installs or by the system's administrator.
class EvdevPermissionProbe : public PermissionProbe {
public:
    EvdevPermissionProbe(InputDeviceAccess& access, const EvdevKeyboardFinder& keyboards,
                         QString uinputPath = QStringLiteral("/dev/uinput"));

    bool canObserveKeys() override;
    bool canPostKeys() override;
    QString observeProblem() const override;
    QString postProblem() const override;

    const QString& uinputPath() const { return m_uinputPath; }
    // The compositor (its virtual keyboard protocol) or the desktop's portal types for Typolet:
    // keys can be posted without /dev/uinput.
    void setTypesWithoutUinput(bool types) { m_typesWithoutUinput = types; }

private:
    InputDeviceAccess& m_access;
    const EvdevKeyboardFinder& m_keyboards;
    QString m_uinputPath;
    bool m_typesWithoutUinput = false;
};
