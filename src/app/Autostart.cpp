#include "Autostart.h"

#include "Logging.h"
#include "Preferences.h"
#include "XdgAutostartBackend.h"

Autostart::Autostart(std::unique_ptr<AutostartBackend> backend)
    : m_backend(std::move(backend)) {}

Autostart::~Autostart() = default;

void Autostart::setStartAtLogin(bool enabled) {
    const std::optional<QString> error =
        enabled ? m_backend->registerItem() : m_backend->unregisterItem();
    if (!error)
        return;
    qCWarning(lcApp).noquote() << QStringLiteral("Failed to ") +
                      (enabled ? QStringLiteral("enable") : QStringLiteral("disable")) +
                      QStringLiteral(" autostart entry: ") + *error;
}

void Autostart::reflectDesktop(Preferences& preferences) {
    const bool registered = m_backend->isRegistered();
    if (preferences.startAtLogin() != registered)
        preferences.setStartAtLogin(registered);
}

void Autostart::applyFirstLaunchDefault(Preferences& preferences) {
    if (preferences.hasLaunchedBefore())
        return;
    preferences.setStartAtLogin(true);
    // Register with the value read back from the preference the switch shows, then once more
    // with true; the second call rewrites the same entry, so doing it twice is harmless.
    setStartAtLogin(preferences.startAtLogin());
    setStartAtLogin(true);
    preferences.setHasLaunchedBefore(true);
}
