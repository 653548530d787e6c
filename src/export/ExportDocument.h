// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "ExportOptions.h"

#include <QByteArrayView>
#include <QList>
#include <QTimeZone>

#include <functional>

/// All that a writer needs: the same document gives the same bytes.
struct ExportDocument {
    QList<CapturedLink> links; ///< in the order in which they are written
    ExportLayout layout = ExportLayout::window;
    Instant now; ///< the time of the export
    QString locale; ///< for the dates, as `systemLocale()` gives it
    std::optional<QTimeZone> zone = {}; ///< absent: the system's
};

/// Takes the parts of a document in their order; false when it wants no more of them.
using ByteSink = std::function<bool(QByteArrayView)>;

/// What heads a link: its title (even an empty one), else the host of its URL, else "Untitled".
QString displayTitle(const CapturedLink &link);
