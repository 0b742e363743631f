#pragma once

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>

// main() for tests of the application shell: before the application object exists (Qt reads
// these once), XDG_CONFIG_HOME and XDG_RUNTIME_DIR point at a temporary folder of this run,
// so nothing a test does, even through the shared instances, reaches the user's own
// settings, autostart folder or running Typolet.
#define TYPOLET_ISOLATED_TEST_MAIN(TestClass)                                                      \
    int main(int argc, char* argv[]) {                                                             \
        QTemporaryDir home;                                                                        \
        if (!home.isValid()) {                                                                     \
            std::fprintf(stderr, "cannot create a temporary folder\n");                            \
            return 1;                                                                              \
        }                                                                                          \
        qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());         \
        qputenv("XDG_RUNTIME_DIR", home.path().toLocal8Bit());                                     \
        QApplication app(argc, argv);                                                              \
        QApplication::setOrganizationName(QStringLiteral("Typolet"));                              \
        QApplication::setApplicationName(QStringLiteral("Typolet"));                               \
        TestClass test;                                                                            \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
