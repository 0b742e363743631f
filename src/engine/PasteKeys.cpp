#include "PasteKeys.h"

#include <QStringList>

PasteKeys::Keys PasteKeys::forApplication(const QString& windowClass) {
    // Classes as the terminals set them; compared without letter case, since some change the
    // case between versions (Alacritty, alacritty).
    static const QStringList controlShiftV{
        QStringLiteral("Gnome-terminal"), QStringLiteral("konsole"),
        QStringLiteral("Xfce4-terminal"), QStringLiteral("Terminator"),
        QStringLiteral("Tilix"),          QStringLiteral("kitty"),
        QStringLiteral("Alacritty"),      QStringLiteral("URxvt"),
        QStringLiteral("st-256color"),    QStringLiteral("foot"),
        QStringLiteral("footclient"),     QStringLiteral("org.wezfurlong.wezterm"),
        QStringLiteral("Lxterminal"),     QStringLiteral("mate-terminal"),
        QStringLiteral("Terminology"),    QStringLiteral("Sakura"),
        QStringLiteral("Guake"),          QStringLiteral("Tilda"),
        QStringLiteral("qterminal"),      QStringLiteral("Roxterm"),
        QStringLiteral("kgx"),            QStringLiteral("Cool-retro-term"),
    };
    // xterm pastes the clipboard only through its menu or a binding the user writes; in Emacs
    // and gVim Ctrl+V scrolls or starts a block selection.
    static const QStringList none{QStringLiteral("XTerm"), QStringLiteral("UXTerm"),
                                  QStringLiteral("Emacs"), QStringLiteral("Gvim")};
    if (none.contains(windowClass, Qt::CaseInsensitive))
        return Keys::NoKeys;
    if (controlShiftV.contains(windowClass, Qt::CaseInsensitive))
        return Keys::ControlShiftV;
    return Keys::ControlV;
}
