#pragma once

#include <QList>
#include <QString>

class InputDeviceAccess;

// Finds the keyboards among the input device nodes (`event*`) of a folder: /dev/input on a
// real system, a temporary folder in tests. A keyboard is a device that reports letter keys;
// Typolet's own virtual keyboard is not one of the user's.
class EvdevKeyboardFinder {
public:
    struct Node {
        QString path;
        QString name;     // empty when the node could not be opened
        bool readable = false;
        bool keyboard = false; // for a node that cannot be read, as the device database says
        bool usable() const { return readable && keyboard; }
    };

    EvdevKeyboardFinder(InputDeviceAccess& access, QString folder);

    const QString& folder() const { return m_folder; }
    // Every `event*` node of the folder, in name order, with what could be learnt about it.
    QList<Node> scan() const;
    // Whether the node at `path` is an `event*` node of the folder.
    bool isDeviceNode(const QString& path) const;
    // Opens the node when it is one of the user's keyboards: its fd (the caller's to close) and
    // name, or -1 when it is unreadable, not a keyboard, or Typolet's own.
    int openKeyboard(const QString& path, QString* name = nullptr) const;

private:
    Node inspect(const QString& path, int* keptFd) const;

    InputDeviceAccess& m_access;
    QString m_folder;
};
