#pragma once

#include "InputBackend.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

class QCoreApplication;

// Every option Typolet takes: --help lists them, the manual page (resources/typolet.1.in)
// explains them. Made once the translations are in place, so the descriptions are in the
// user's language.
class CommandLine {
public:
    CommandLine();

    // Reads the options; --help and --version print their answer and exit here, as does an
    // unknown option (with status 1).
    void process(const QCoreApplication& app) { m_parser.process(app); }
    // `--insert`: the insert window is wanted, of this Typolet or of the one already running.
    bool insertWanted() const { return m_parser.isSet(m_insert); }

    // Whether the options are answered on the terminal (help, version, the input check): they
    // need no display, so they are read before Typolet looks for one.
    static bool answersOnTerminal(int argc, char* argv[]);
    // Answers them, without windows; the program's exit status.
    static int answerOnTerminal(int argc, char* argv[], const InputBackend::Choice& backend);

private:
    QCommandLineParser m_parser;
    const QCommandLineOption m_checkInput;
    const QCommandLineOption m_insert;
};
