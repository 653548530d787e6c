// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// Collects what `debugLog` writes while it lives. One at a time.
class DiagnosticLines
{
public:
    DiagnosticLines();
    DiagnosticLines(const DiagnosticLines &) = delete;
    DiagnosticLines &operator=(const DiagnosticLines &) = delete;
    ~DiagnosticLines();

    /// The lines so far, oldest first.
    QStringList lines() const;
    /// The lines since the last call.
    QStringList take();
};
