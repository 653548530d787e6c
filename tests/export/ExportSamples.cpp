// SPDX-License-Identifier: MIT
#include "ExportSamples.h"

using namespace Qt::StringLiterals;

CapturedLink makeLink(const QString &url, const QString &title, const QString &summary,
                      Instant copiedAt)
{
    CapturedLink link;
    link.id = QUuid::createUuid();
    link.url = url;
    link.title = title.isNull() ? std::nullopt : std::optional(title);
    link.summary = summary.isNull() ? std::nullopt : std::optional(summary);
    link.copiedAt = copiedAt;
    return link;
}

ExportDocument makeDocument(const QList<CapturedLink> &links, ExportLayout layout)
{
    return {links, layout, Instant(std::chrono::seconds(1'763'712'300)), u"en_US"_s,
            QTimeZone("UTC")};
}

/// What the leak checker is to overlook: Cairo loses a buffer for each font with PostScript
/// outlines, fontconfig the pattern that a cache held at the end.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libcairo.so\nleak:libfontconfig.so\n";
}
