#pragma once

#include <QStringList>

// Collects the diagnostic lines written while it exists, with typed-key lines switched on or
// off as the test asks; restores standard output afterwards.
class CapturedDiagnostics {
public:
    explicit CapturedDiagnostics(bool typedLines = true);
    ~CapturedDiagnostics();
    CapturedDiagnostics(const CapturedDiagnostics&) = delete;
    CapturedDiagnostics& operator=(const CapturedDiagnostics&) = delete;

    QStringList lines;
};
