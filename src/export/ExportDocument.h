// SPDX-License-Identifier: MIT
#pragma once

#include "ByteSink.h"
#include "CapturedLink.h"
#include "ExportOptions.h"

#include <QList>
#include <QTimeZone>

/// All that a writer needs: the same document gives the same bytes.
struct ExportDocument {
    QList<CapturedLink> links; ///< in the order in which they are written
    ExportLayout layout = ExportLayout::window;
    Instant now; ///< the time of the export
    QString locale; ///< for the dates, as `systemLocale()` gives it
    std::optional<QTimeZone> zone = {}; ///< absent: the system's
};
