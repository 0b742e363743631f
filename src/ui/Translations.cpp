#include "Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

void Translations::install(QCoreApplication& application) {
    // Each translator lives as long as the application that uses it.
    const auto add = [&application](auto load) {
        auto* translator = new QTranslator(&application);
        if (load(*translator))
            QCoreApplication::installTranslator(translator);
        else
            delete translator;
    };
    add([](QTranslator& t) { return t.load(QStringLiteral(":/i18n/typolet_en.qm")); });
    if (QLocale().language() != QLocale::English && QLocale().language() != QLocale::C)
        add([](QTranslator& t) {
            return t.load(QLocale(), QStringLiteral("typolet"), QStringLiteral("_"),
                          QStringLiteral(":/i18n"));
        });
    add([](QTranslator& t) {
        return t.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    });
}
