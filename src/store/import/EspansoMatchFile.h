#pragma once

#include "ImportPlan.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

class ImportReader;

// A YAML match file of the espanso text expander. Its top-level `matches` list holds mappings;
// one with a string `trigger` (or a `triggers` list of strings) and a string `replace` gives a
// snippet per trigger, in a category named after the file; `word: true` waits for a word end
// and `propagate_case: true` matches the command's case. A file with a top-level
// `filter_class` (a class name, or names separated by "|") gives a category limited to those
// applications; one that filters otherwise is refused. A `form` match (its layout with
// [[name]] fields, described under `form_fields`) becomes a content with form fields, and so do
// the {{form1.name}} uses of a `form` variable. Mappings without a string `replace` or `form`
// (images, regular expressions) and those whose content needs a shell or script variable are
// skipped and counted, named in the plan's `leftOut` where they can be; other keys of a
// mapping and other top-level keys are left alone.
//
// YAML aliases let a small file name one large value thousands of times. The parser shares
// such a value, but each snippet made from it is a copy of its own; so the snippets' text and
// the entries visited are counted as the file is converted, and a file beyond `maxText` or
// `maxNodes` is refused.
class EspansoMatchFile {
    Q_DECLARE_TR_FUNCTIONS(EspansoMatchFile)
public:
    // Commands and contents together, in bytes of UTF-8.
    static constexpr qint64 maxText = qint64(50) << 20;
    // Mappings, keys and list items visited, each time an alias leads to them again included.
    static constexpr qint64 maxNodes = 1'000'000;

    static ImportPlan read(const QString& path, ImportReader& reader);
    static ImportPlan decode(const QString& path, const QByteArray& yaml, ImportReader& reader);
};
