#include "CommandLine.h"

#include "InputCheck.h"
#include "Logging.h"
#include "Translations.h"

#include <QCoreApplication>
#include <QTextStream>

CommandLine::CommandLine()
    : m_checkInput(QStringLiteral("check-input"),
                   QCoreApplication::translate(
                       "main", "Prints the keyboard backend Typolet would use and whether it can "
                               "see and type keys here, then exits: with 0 when it can, 1 when "
                               "not.")),
      m_insert(QStringLiteral("insert"),
               QCoreApplication::translate(
                   "main", "Opens the Insert Snippet window of the running Typolet (starting "
                           "Typolet first if none runs); bind it to keys in the desktop's "
                           "keyboard settings where Typolet cannot take keys itself (Wayland).")) {
    m_parser.setApplicationDescription(QCoreApplication::translate(
        "main", "Typolet, a text expander: typing a snippet's command in any application "
                "replaces it with the snippet's text."));
    m_parser.addHelpOption();
    m_parser.addVersionOption();
    m_parser.addOption(m_checkInput);
    m_parser.addOption(m_insert);
}

bool CommandLine::answersOnTerminal(int argc, char* argv[]) {
    static constexpr const char* terminalOptions[] = {"--check-input", "--help", "-h", "-?",
                                                       "--help-all", "--version", "-v"};
    for (int i = 1; i < argc; ++i)
        for (const char* option : terminalOptions)
            if (qstrcmp(argv[i], option) == 0)
                return true;
    return false;
}

int CommandLine::answerOnTerminal(int argc, char* argv[], const InputBackend::Choice& backend) {
    QCoreApplication app(argc, argv);
    Logging::configure();
    Translations::install(app);
    CommandLine().process(app);
    QTextStream out(stdout);
    return InputCheck::run(out, backend);
}
