// SPDX-License-Identifier: MIT
#pragma once

#include "ExportDocument.h"

/// A link of the time `copiedAt`; null texts are absent.
CapturedLink makeLink(const QString &url, const QString &title = {}, const QString &summary = {},
                      Instant copiedAt = Instant(std::chrono::seconds(1'763'712'300)));

/// An English document of 2025-11-21 08:05 UTC.
ExportDocument makeDocument(const QList<CapturedLink> &links,
                            ExportLayout layout = ExportLayout::window);
