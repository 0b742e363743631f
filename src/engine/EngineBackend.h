#pragma once

#include <QObject>
#include <QString>
#include <QUuid>
#include <functional>

class OpenWindows;
class FormValueSource;
class SnippetStore;
class WindowFocus;
struct EngineSettings;
struct Snippet;

// One session's way of watching and typing keys (the X server, or on Wayland the kernel's
// input devices and the compositor's channels) with the expansion engine over it. The
// application chooses one at start and speaks to it only through this interface.
class EngineBackend : public QObject {
    Q_OBJECT
public:
    // What this session lets Typolet do; the application offers only what is possible.
    struct Capabilities {
        bool grabsGlobalKeys = false;       // desktop-wide keys (the pause keys) can be taken
        bool tellsApplications = false;     // the focused application can be named
        bool choosesKeyboardLayout = false; // the layout is read here, so another may be chosen
    };

    // The desktop-wide keys Typolet takes, each grabbed on its own.
    enum class GlobalKey { pause, insertSnippet };

    using QObject::QObject;

    virtual Capabilities capabilities() const = 0;

    // Makes the engine over `store` and checks the permissions (the guidance shows once the
    // event loop runs). While `keysIgnored` answers true, typed keys are not looked at. True
    // when the engine listens.
    virtual bool start(SnippetStore& store, std::function<bool()> keysIgnored) = 0;

    // The user's settings, all at once, in force from the next key. After start().
    virtual void apply(const EngineSettings& settings) = 0;

    // Takes `keys` for the whole desktop as `which`, letting go of those it took before, and
    // runs `onPressed` at each press. False when they cannot be taken: none are given, another
    // program holds them, or the session lets no program take keys from the others.
    virtual bool grabGlobalKey(GlobalKey which, QKeyCombination keys,
                               std::function<void()> onPressed) = 0;

    // Sends `snippet`'s content to the focused window as an expansion would, erasing nothing
    // (the insert window). After start().
    virtual void insert(const Snippet& snippet) = 0;
    // Where a content's form fields get their values (the fill-in form); before or after
    // start(). Without one they type their defaults.
    virtual void setFormValueSource(FormValueSource* source) = 0;
    // The keyboard focus, to hand back after the insert window; null where no client may move
    // it (Wayland).
    virtual WindowFocus* windowFocus() const = 0;

    // The windows open now, to offer their applications by name; null where a client cannot
    // list them (Wayland).
    virtual OpenWindows* openWindows() const { return nullptr; }

    // The application that has the keyboard focus now; empty when it cannot be told.
    virtual QString focusedApplication() const = 0;

    // The keyboard layout in use and where it comes from, as a person reads it; empty where
    // the layout cannot be chosen here.
    virtual QString layoutInUse() const = 0;

    // Gives back what the backend changed on the desktop for its typing (at quit).
    virtual void restore() = 0;

signals:
    // Said again whenever the layout in use or the way of typing changes.
    void layoutInUseChanged(const QString& description);
    // A snippet's content went out, expanded or inserted.
    void snippetUsed(const QUuid& id);
};
