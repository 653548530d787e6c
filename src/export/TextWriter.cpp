// SPDX-License-Identifier: MIT
#include "TextWriter.h"

#include "DateText.h"
#include "LineBuffer.h"

using namespace Qt::StringLiterals;

namespace
{

void addText(LineBuffer &out, const CapturedLink &link, ExportLayout layout, const QString &copied)
{
    const bool isCompact = layout == ExportLayout::compact;
    out.line(displayTitle(link));
    if (link.summary && !isCompact)
        out.line(u"  "_s, *link.summary);
    out.line(link.url);
    out.line(u"Captured: "_s, copied);
    if (link.summary && isCompact)
        out.line(u"Summary: "_s, *link.summary);
    out.line();
}

} // namespace

void writeText(const ExportDocument &document, const ByteSink &sink)
{
    const DateText dates(document.locale, document.zone);
    LineBuffer out(sink);
    out.line(u"Strandloom Export"_s);
    out.line(u"Exported on "_s, dates.mediumDateShortTime(document.now));
    out.line(QString(50, u'='), u"\n"_s);
    for (const CapturedLink &link : document.links) {
        addText(out, link, document.layout, dates.mediumDateShortTime(link.copiedAt));
        if (!out.flushPart())
            return;
    }
    out.flush();
}
