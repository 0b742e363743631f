// Typolet's shell with a stand-in editor and no engine, for end-to-end checks of what the
// shell alone does under a real X server: the tray icon and its menu, the quit question, the
// single-instance guard. The same checks run against the full program when it is built.

#include "Autostart.h"
#include "AutostartPreferences.h"
#include "TypoletApp.h"
#include "XdgAutostartBackend.h"

#include <QApplication>
#include <QLabel>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Typolet"));
    QApplication::setApplicationName(QStringLiteral("Typolet"));

    Autostart autostart(std::make_unique<XdgAutostartBackend>());
    AutostartPreferences preferences;
    TypoletApp typolet({{},
                        {},
                        [] {
                            auto editor = std::make_unique<QLabel>(QStringLiteral("Snippets"));
                            editor->setAlignment(Qt::AlignCenter);
                            return editor;
                        }},
                       autostart, preferences);
    if (!typolet.start())
        return 0;
    return QApplication::exec();
}
