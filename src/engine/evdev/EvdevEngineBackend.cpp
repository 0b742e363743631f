#include "EvdevEngineBackend.h"

#include "AtSpiPasswordFieldWatch.h"
#include "EvdevKeyMonitor.h"
#include "EvdevKeyboardFinder.h"
#include "EvdevPermissionProbe.h"
#include "KeyTranslator.h"
#include "LibevdevDeviceAccess.h"
#include "LogindSessionWatch.h"
#include "Logging.h"
#include "PermissionGuidance.h"
#include "PortalKeyboardOutput.h"
#include "SwayLayoutWatch.h"
#include "TextExpander.h"
#include "UdevHotplugSource.h"
#include "UinputDevice.h"
#include "UinputKeyboardOutput.h"
#include "WaylandKeymapSource.h"
#include "WaylandVirtualKeyboardOutput.h"

#include <QCoreApplication>
#include <QDBusConnection>

EvdevEngineBackend::EvdevEngineBackend(PermissionAlertPresenter& guidance,
                                       ClipboardSource* clipboard, const QString& inputFolder,
                                       const QString& uinputPath, QObject* parent)
    : EngineBackend(parent), m_guidance(guidance), m_clipboard(clipboard),
      m_access(std::make_unique<LibevdevDeviceAccess>()),
      m_finder(std::make_unique<EvdevKeyboardFinder>(*m_access, inputFolder)),
      m_permissions(std::make_unique<EvdevPermissionProbe>(*m_access, *m_finder, uinputPath)),
      m_keymaps(std::make_unique<WaylandKeymapSource>()),
      m_translator(std::make_unique<KeyTranslator>(*m_keymaps)),
      m_hotplug(std::make_unique<UdevHotplugSource>()),
      m_monitor(std::make_unique<EvdevKeyMonitor>(*m_keymaps, *m_access, *m_finder,
                                                  m_hotplug.get())),
      m_output(std::make_unique<UinputKeyboardOutput>(*m_keymaps)),
      m_compositorOutput(std::make_unique<WaylandVirtualKeyboardOutput>()),
      m_portalOutput(
          std::make_unique<PortalKeyboardOutput>(QDBusConnection::sessionBus(), *m_output)),
      m_passwordField(std::make_unique<AtSpiPasswordFieldWatch>()), m_uinputPath(uinputPath) {
    EvdevKeyMonitor* monitor = m_monitor.get();
    m_output->setKeyboardStateQuery([monitor] { return monitor->currentState(); });
    WaylandKeymapSource* keymaps = m_keymaps.get();
    m_monitor->setGroupReport([keymaps] { return keymaps->reportedGroup(); });
    connect(m_keymaps.get(), &WaylandKeymapSource::changed, this,
            [this] { emit layoutInUseChanged(layoutInUse()); });
}

EvdevEngineBackend::~EvdevEngineBackend() = default;

QString EvdevEngineBackend::keymapOrigin() const {
    switch (m_keymaps->origin()) {
    case WaylandKeymapSource::Origin::Compositor:
        return QCoreApplication::translate("EvdevEngineBackend", "the desktop's keyboard");
    case WaylandKeymapSource::Origin::Chosen:
        return QCoreApplication::translate("EvdevEngineBackend", "your choice in Preferences");
    case WaylandKeymapSource::Origin::SystemConfiguration:
        break;
    }
    return QCoreApplication::translate(
        "EvdevEngineBackend",
        "the system's keyboard configuration (XKB_DEFAULT_LAYOUT or /etc/default/keyboard)");
}

QString EvdevEngineBackend::layoutInUse() const {
    return QCoreApplication::translate("EvdevEngineBackend", "%1, from %2; typing %3")
        .arg(m_keymaps->layoutName(), keymapOrigin(), typingDescription(m_typing));
}

void EvdevEngineBackend::setRestoreTokenStore(std::function<QString()> load,
                                              std::function<void(const QString&)> save) {
    m_portalOutput->setTokenStore(std::move(load), std::move(save));
}

QString EvdevEngineBackend::typingDescription(Typing typing) {
    if (typing == Typing::Compositor)
        return QCoreApplication::translate(
            "EvdevEngineBackend",
            "through the compositor's virtual keyboard (any character, whatever the layout)");
    if (typing == Typing::Portal)
        return QCoreApplication::translate("EvdevEngineBackend",
                                           "through the desktop's remote desktop portal");
    return QCoreApplication::translate("EvdevEngineBackend",
                                       "through the uinput virtual keyboard (the layout's keys)");
}

void EvdevEngineBackend::apply(const EngineSettings& settings) {
    if (m_engine)
        m_engine->apply(settings);
    // A keymap is compiled only when the choice changed, not with every other setting.
    if (m_chosenLayout == settings.keyboardLayout)
        return;
    m_chosenLayout = settings.keyboardLayout;
    if (!m_keymaps->setChosenLayout(settings.keyboardLayout))
        qCWarning(lcEngine).noquote()
            << QStringLiteral(
                   "The keyboard layout \"%1\" could not be loaded; keeping the one in use")
                   .arg(settings.keyboardLayout);
}

bool EvdevEngineBackend::start(SnippetStore& store, std::function<bool()> keysIgnored) {
    // The keymap the compositor hands its clients (the system's without one), then the
    // virtual keyboard, made once and kept for the whole session.
    m_keymaps->connectToCompositor();
    m_keymaps->followDesktopLayoutSwitches();
    m_swayLayouts = std::make_unique<SwayLayoutWatch>();
    if (m_swayLayouts->connectToSway(qEnvironmentVariable("SWAYSOCK")))
        connect(m_swayLayouts.get(), &SwayLayoutWatch::groupChanged, m_keymaps.get(),
                &WaylandKeymapSource::setCompositorGroup);
    // While another user's session has the seat, no key is read and none is typed.
    m_session = std::make_unique<LogindSessionWatch>(QDBusConnection::systemBus());
    connect(m_session.get(), &LogindSessionWatch::activeChanged, m_monitor.get(),
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
        connect(m_portalOutput.get(), &PortalKeyboardOutput::readyChanged, this,
                [this](bool ready) {
                    m_typing = ready ? Typing::Portal : Typing::Uinput;
                    m_permissions->setTypesWithoutUinput(ready);
                    emit layoutInUseChanged(layoutInUse());
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
    emit layoutInUseChanged(layoutInUse());
    m_engine = std::make_unique<TextExpander>(
        store, EnginePlatform{m_permissions.get(), m_monitor.get(), m_translator.get(), output,
                              nullptr, m_passwordField.get()});
    m_engine->setKeysIgnoredWhen(std::move(keysIgnored));
    m_engine->setFormValues(m_formValues);
    m_engine->setClipboard(m_clipboard);
    connect(m_engine.get(), &TextExpander::snippetUsed, this, &EngineBackend::snippetUsed);
    const bool listening = m_engine->isMonitoring();
    if (listening)
        m_passwordField->start();
    PermissionGuidance(*m_permissions, m_guidance, PermissionGuidance::Backend::KernelDevices)
        .checkAndRequestPermissions();
    return listening;
}

void EvdevEngineBackend::setFormValueSource(FormValueSource* source) {
    m_formValues = source;
    if (m_engine)
        m_engine->setFormValues(source);
}

void EvdevEngineBackend::insert(const Snippet& snippet) {
    if (m_engine)
        m_engine->insert(snippet);
}
