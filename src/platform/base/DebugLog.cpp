// SPDX-License-Identifier: MIT
#include "DebugLog.h"

#include <QLoggingCategory>

namespace
{
Q_LOGGING_CATEGORY(diagnostics, "strandloom", QtWarningMsg)
}

void debugLog(const QString &line)
{
    if (!diagnostics().isDebugEnabled())
        return;
    QString oneLine = line;
    oneLine.replace(u'\n', u' ').replace(u'\r', u' ');
    qCDebug(diagnostics).noquote() << oneLine;
}
