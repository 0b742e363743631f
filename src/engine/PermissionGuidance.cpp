#include "PermissionGuidance.h"

#include <QCoreApplication>
#include "PermissionAlertPresenter.h"
#include "PermissionProbe.h"

const QString PermissionGuidance::title = QStringLiteral("Permissions Required");
const QString PermissionGuidance::settingsUrl = QStringLiteral("qrc:/typolet/permissions.html");

PermissionGuidance::PermissionGuidance(PermissionProbe& probe, PermissionAlertPresenter& presenter,
                                       QString executablePath)
    : m_probe(probe), m_presenter(presenter), m_executablePath(std::move(executablePath)) {}

bool PermissionGuidance::isDeveloperBuild(const QString& executablePath) {
    return executablePath.contains(QStringLiteral("/build/"));
}

QString PermissionGuidance::message(bool inputMonitoringGranted, bool accessibilityGranted,
                                    bool developerBuild) {
    const auto icon = [](bool granted) {
        return granted ? QStringLiteral("✅") : QStringLiteral("❌");
    };
    QString text = QStringLiteral("Typolet needs the following permissions to function properly:\n\n");
    text += icon(inputMonitoringGranted) +
            QStringLiteral(" Input Monitoring: To detect your text shortcuts\n");
    text += icon(accessibilityGranted) +
            QStringLiteral(" Accessibility: To expand your text shortcuts\n\n");
    if (developerBuild) {
        text += QStringLiteral("Since you're running from Xcode, follow these steps:\n");
        text += QStringLiteral("1. Open System Settings > Privacy & Security\n");
        text += QStringLiteral("2. Click the lock icon 🔒 to make changes\n");
        text += QStringLiteral("3. Find Xcode in both sections\n");
        text += QStringLiteral("4. Enable Xcode\n");
        text += QStringLiteral("\nAfter enabling, you may need to rebuild the app.");
    } else {
        text += QStringLiteral("1. Click 'Open System Settings'\n");
        text += QStringLiteral("2. Click the lock icon 🔒 to make changes\n");
        text += QStringLiteral("3. Find and enable Typolet in both sections");
    }
    return text;
}

bool PermissionGuidance::checkAndRequestPermissions() {
    const bool developerBuild = isDeveloperBuild(m_executablePath);
    // Both questions are asked every time, whatever the first answer.
    const bool inputMonitoring = m_probe.canObserveKeys();
    const bool accessibility = m_probe.canPostKeys();
    if (inputMonitoring && accessibility)
        return false;
    const QString text = message(inputMonitoring, accessibility, developerBuild);
    PermissionAlertPresenter* presenter = &m_presenter;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [presenter, text] { presenter->showPermissionAlert(title, text, settingsUrl); },
        Qt::QueuedConnection);
    return true;
}
