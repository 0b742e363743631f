#include "EvdevEngineBootstrap.h"

#include "AtSpiPasswordFieldWatch.h"
#include "EvdevKeyMonitor.h"
#include "EvdevKeyboardFinder.h"
#include "EvdevPermissionProbe.h"
#include "KeyTranslator.h"
#include "KeyboardLayoutCatalogue.h"
#include "Logging.h"
#include "LibevdevDeviceAccess.h"
#include "LogindSessionWatch.h"
#include "PortalKeyboardOutput.h"
#include "PermissionGuidance.h"
#include "SwayLayoutWatch.h"
#include "SystemClipboard.h"
#include "TextExpander.h"
#include "UdevHotplugSource.h"
#include "UinputDevice.h"
#include "UinputKeyboardOutput.h"
#include "WaylandKeymapSource.h"
#include "WaylandVirtualKeyboardOutput.h"

#include <QCoreApplication>
#include <QDBusConnection>

EvdevEngineBootstrap::EvdevEngineBootstrap(bool withWindows, const QString& inputFolder,
                                           const QString& uinputPath)
    : EngineHost(withWindows), m_access(std::make_unique<LibevdevDeviceAccess>()),
      m_finder(std::make_unique<EvdevKeyboardFinder>(*m_access, inputFolder)),
      m_permissions(std::make_unique<EvdevPermissionProbe>(*m_access, *m_finder, uinputPath)),
      m_keymaps(std::make_unique<WaylandKeymapSource>()),
      m_translator(std::make_unique<KeyTranslator>(*m_keymaps)),
      m_hotplug(std::make_unique<UdevHotplugSource>()),
      m_monitor(std::make_unique<EvdevKeyMonitor>(*m_keymaps, *m_access, *m_finder,
                                                  m_hotplug.get())),
      m_output(std::make_unique<UinputKeyboardOutput>(*m_keymaps)),
      m_compositorOutput(std::make_unique<WaylandVirtualKeyboardOutput>()),
      m_portalOutput(std::make_unique<PortalKeyboardOutput>(QDBusConnection::sessionBus(), *m_output)),
      m_passwordField(std::make_unique<AtSpiPasswordFieldWatch>()),
      m_clipboard(std::make_unique<SystemClipboard>()), m_uinputPath(uinputPath) {
    EvdevKeyMonitor* monitor = m_monitor.get();
    m_output->setKeyboardStateQuery([monitor] { return monitor->currentState(); });
    WaylandKeymapSource* keymaps = m_keymaps.get();
    m_monitor->setGroupReport([keymaps] { return keymaps->reportedGroup(); });
}

EvdevEngineBootstrap::~EvdevEngineBootstrap() {
    // The engine goes first: it may still be typing through the output.
    m_engine.reset();
}

QString EvdevEngineBootstrap::keymapOrigin() const {
    switch (m_keymaps->origin()) {
    case WaylandKeymapSource::Origin::Compositor:
        return QCoreApplication::translate("EvdevEngineBootstrap", "the desktop's keyboard");
    case WaylandKeymapSource::Origin::Chosen:
        return QCoreApplication::translate("EvdevEngineBootstrap", "your choice in Preferences");
    case WaylandKeymapSource::Origin::SystemConfiguration:
        break;
    }
    return QCoreApplication::translate(
        "EvdevEngineBootstrap",
        "the system's keyboard configuration (XKB_DEFAULT_LAYOUT or /etc/default/keyboard)");
}

QString EvdevEngineBootstrap::layoutInUse() const {
    return QCoreApplication::translate("EvdevEngineBootstrap", "%1, from %2; typing %3")
        .arg(m_keymaps->layoutName(), keymapOrigin(), typingDescription(m_typing));
}

void EvdevEngineBootstrap::setRemoteDesktopTokenStore(std::function<QString()> load,
                                                      std::function<void(const QString&)> save) {
    m_portalOutput->setTokenStore(std::move(load), std::move(save));
}

QString EvdevEngineBootstrap::typingDescription(Typing typing) {
    if (typing == Typing::Compositor)
        return QCoreApplication::translate(
            "EvdevEngineBootstrap",
            "through the compositor's virtual keyboard (any character, whatever the layout)");
    if (typing == Typing::Portal)
        return QCoreApplication::translate(
            "EvdevEngineBootstrap", "through the desktop's remote desktop portal");
    return QCoreApplication::translate("EvdevEngineBootstrap",
                                       "through the uinput virtual keyboard (the layout's keys)");
}

void EvdevEngineBootstrap::setKeyboardLayout(const QString& name) {
    const auto [layout, variant] = KeyboardLayoutCatalogue::layoutAndVariant(name);
    if (!m_keymaps->setChosenLayout(layout, variant))
        qCWarning(lcEngine).noquote()
            << QStringLiteral("The keyboard layout \"%1\" could not be loaded; keeping the one in use")
                   .arg(name);
}

void EvdevEngineBootstrap::setLayoutInUseHandler(std::function<void(const QString&)> handler) {
    m_layoutInUse = std::move(handler);
    if (!m_layoutInUse)
        return;
    QObject::connect(m_keymaps.get(), &WaylandKeymapSource::changed, m_keymaps.get(),
                     [this] {
                         if (m_layoutInUse)
                             m_layoutInUse(layoutInUse());
                     });
    m_layoutInUse(layoutInUse());
}

bool EvdevEngineBootstrap::start(SnippetStore& store) {
    // The keymap the compositor hands its clients (the system's without one), then the
    // virtual keyboard, made once and kept for the whole session.
    m_keymaps->connectToCompositor();
    m_keymaps->followDesktopLayoutSwitches();
    m_swayLayouts = std::make_unique<SwayLayoutWatch>();
    if (m_swayLayouts->connectToSway(qEnvironmentVariable("SWAYSOCK")))
        QObject::connect(m_swayLayouts.get(), &SwayLayoutWatch::groupChanged, m_keymaps.get(),
                         &WaylandKeymapSource::setCompositorGroup);
    // While another user's session has the seat, no key is read and none is typed.
    m_session = std::make_unique<LogindSessionWatch>(QDBusConnection::systemBus());
    QObject::connect(m_session.get(), &LogindSessionWatch::activeChanged, m_monitor.get(),
                     [this](bool active) {
                         m_monitor->setSessionActive(active);
                         m_output->setSessionActive(active);
                         m_compositorOutput->setSessionActive(active);
                         m_portalOutput->setSessionActive(active);
                     });
    m_session->start(qEnvironmentVariable("XDG_SESSION_ID"));
    KeyboardOutput* output = m_output.get();
    if (m_compositorOutput->connectToCompositor()) {
        m_typing = Typing::Compositor;
        m_permissions->setTypesWithoutUinput(true);
        output = m_compositorOutput.get();
        qCInfo(lcEngine).noquote()
            << QStringLiteral("Typing through the compositor's virtual keyboard");
    } else {
        // The portal types once the desktop said yes; the uinput keyboard until then.
        output = m_portalOutput.get();
        QObject::connect(m_portalOutput.get(), &PortalKeyboardOutput::readyChanged,
                         m_portalOutput.get(), [this](bool ready) {
                             m_typing = ready ? Typing::Portal : Typing::Uinput;
                             m_permissions->setTypesWithoutUinput(ready);
                             if (m_layoutInUse)
                                 m_layoutInUse(layoutInUse());
                         });
        m_portalOutput->start();
        QString error;
        m_virtualKeyboard = UinputDevice::create(m_uinputPath, error);
        if (m_virtualKeyboard)
            m_output->setDevice(m_virtualKeyboard->fd());
        else
            qCWarning(lcEngine).noquote()
                << QStringLiteral("Cannot make the virtual keyboard through %1: %2")
                       .arg(m_uinputPath, error);
    }
    if (m_layoutInUse)
        m_layoutInUse(layoutInUse());
    const bool listening = startEngine(
        store,
        EnginePlatform{m_permissions.get(), m_monitor.get(), m_translator.get(), output, nullptr,
                       m_passwordField.get()},
        m_clipboard.get());
    if (listening)
        m_passwordField->start();
    guide(*m_permissions, PermissionGuidance::Backend::KernelDevices);
    return listening;
}
