#include "CapturedDiagnostics.h"

#include "Diagnostics.h"

CapturedDiagnostics::CapturedDiagnostics(bool typedLines) {
    Diagnostics::setTypedEnabled(typedLines);
    Diagnostics::setSink([this](const QString& line) { lines.append(line); });
}

CapturedDiagnostics::~CapturedDiagnostics() {
    Diagnostics::setSink({});
    Diagnostics::setTypedEnabled(false);
}
