// SPDX-License-Identifier: MIT
#include "DebugLog.h"

#include "Printable.h"

#include <QLoggingCategory>

namespace
{
Q_LOGGING_CATEGORY(diagnostics, "strandloom", QtWarningMsg)
}

void debugLog(const QString &line)
{
    if (diagnostics().isDebugEnabled())
        qCDebug(diagnostics).noquote() << printable(line);
}
