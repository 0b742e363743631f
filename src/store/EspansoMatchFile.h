#pragma once

#include "ImportPlan.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

// A YAML match file of the espanso text expander. Its top-level `matches` list holds mappings;
// one with a string `trigger` (or a `triggers` list of strings) and a string `replace` gives a
// snippet per trigger, in a category named after the file. Mappings without a string
// `replace` (images, forms, regular expressions) are skipped and counted; other keys of a
// mapping and other top-level keys are left alone.
class EspansoMatchFile {
    Q_DECLARE_TR_FUNCTIONS(EspansoMatchFile)
public:
    static ImportPlan read(const QString& path);
    static ImportPlan decode(const QString& path, const QByteArray& yaml);
};
