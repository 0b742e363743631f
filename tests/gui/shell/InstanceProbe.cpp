// A stand-in for a second Typolet process in the single-instance tests: it claims the given
// server name like Typolet does at start-up and reports its role on standard output.
//
//   typolet_instance_probe SERVER_NAME
//
// Secondary: prints "secondary notified" (exit 3) or "secondary unreachable" (exit 4).
// Primary: prints "primary", then waits; when asked to come forward it prints "activated" and
// exits 0.

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
        std::printf("%s\n",
                    guard.notifiedPrimary() ? "secondary notified" : "secondary unreachable");
        return guard.notifiedPrimary() ? 3 : 4;
    }
    QObject::connect(&guard, &SingleInstanceGuard::activationRequested, &app, [] {
        std::printf("activated\n");
        std::fflush(stdout);
        QCoreApplication::exit(0);
    });
    std::printf("primary\n");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
