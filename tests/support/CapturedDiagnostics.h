#pragma once

#include <QStringList>
#include <QtGlobal>

// Collects the messages of Typolet's logging categories written while it exists, with the
// typed-text lines switched on or off as the test asks; puts the previous handler back after.
class CapturedDiagnostics {
public:
    explicit CapturedDiagnostics(bool typedLines = true);
    ~CapturedDiagnostics();
    CapturedDiagnostics(const CapturedDiagnostics&) = delete;
    CapturedDiagnostics& operator=(const CapturedDiagnostics&) = delete;

    QStringList lines;

private:
    QtMessageHandler m_previous = nullptr;
};
