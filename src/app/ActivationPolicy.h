#pragma once

#include <QList>
#include <QObject>

class QWidget;

// How Typolet presents itself. Regular: its windows may show and the main window has a
// taskbar entry. Accessory ("Run in Background"): every window is hidden and only the tray
// icon is left, while snippets keep expanding.
class ActivationPolicy : public QObject {
    Q_OBJECT
public:
    enum class Policy { Regular = 0, Accessory = 1 };
    Q_ENUM(Policy)

    explicit ActivationPolicy(QObject* parent = nullptr);

    Policy policy() const { return m_policy; }
    void setActivationPolicy(Policy policy);

    // Hides every window of the application.
    void hideApplication();

    // Back to Regular, then shows every window of the application and brings it to the front,
    // including windows the user had closed (closed windows are only hidden).
    void bringAllWindowsForward();

    // The application's own windows, in creation order: top-level, parentless windows and
    // dialogs that have been shown or hidden at least once. Menus, tooltips, transient child
    // dialogs, the tray icon's embedded window and widgets that were never meant to be
    // windows are left out.
    static QList<QWidget*> applicationWindows();

signals:
    void policyChanged(ActivationPolicy::Policy policy);

private:
    Policy m_policy = Policy::Regular;
};
