// A stand-in for another Typolet process in the single-instance tests: it claims the given
// server name as Typolet does at start-up, prints its role ("primary" or "secondary") and, as
// the primary, waits to be killed.
//
//   typolet_instance_probe SERVER_NAME

#include "SingleInstanceGuard.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s SERVER_NAME\n", argv[0]);
        return 2;
    }
    SingleInstanceGuard guard(QString::fromLocal8Bit(argv[1]));
    if (guard.claim() == SingleInstanceGuard::Role::Secondary) {
        std::printf("secondary\n");
        return 3;
    }
    std::printf("primary\n");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
