#include "CommandLine.h"
#include "DesktopShell.h"
#include "InputBackend.h"
#include "Logging.h"

#include <QCoreApplication>

int main(int argc, char* argv[]) {
    Logging::markStartup("main");
    QCoreApplication::setOrganizationName(QStringLiteral("Typolet"));
    QCoreApplication::setApplicationName(QStringLiteral("Typolet"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TYPOLET_VERSION));
    const InputBackend::Choice backend = InputBackend::choose();
    if (CommandLine::answersOnTerminal(argc, argv))
        return CommandLine::answerOnTerminal(argc, argv, backend);
    return DesktopShell::run(argc, argv, backend);
}
