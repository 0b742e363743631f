#pragma once

#include "SnippetUsage.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QString>

// How often a snippet was used, in words for the editor: "Used 12 times, last yesterday".
class UsageDescription {
    Q_DECLARE_TR_FUNCTIONS(UsageDescription)
public:
    // `now` in local time decides "today", "yesterday" and "N days ago"; older uses give the date.
    static QString describe(const SnippetUsage& usage, const QDateTime& now);
};
