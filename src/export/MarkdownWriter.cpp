// SPDX-License-Identifier: MIT
#include "MarkdownWriter.h"

#include "DateText.h"
#include "LineBuffer.h"

using namespace Qt::StringLiterals;

namespace
{

void addMarkdown(LineBuffer &out, const CapturedLink &link, const QString &copied)
{
    out.line(u"## "_s, displayTitle(link), u"\n"_s);
    if (link.summary)
        out.line(u"> "_s, *link.summary, u"\n"_s);
    out.line(u"**URL:** "_s, link.url, u"\n"_s);
    out.line(u"**Captured:** "_s, copied, u"\n"_s);
    out.line(u"---\n"_s);
}

} // namespace

void writeMarkdown(const ExportDocument &document, const ByteSink &sink)
{
    const DateText dates(document.locale, document.zone);
    LineBuffer out(sink);
    out.line(u"# Strandloom Export\n"_s);
    out.line(u"_Exported on "_s, dates.mediumDateShortTime(document.now), u"_\n"_s);
    out.line(u"---\n"_s);
    for (const CapturedLink &link : document.links) {
        addMarkdown(out, link, dates.mediumDateShortTime(link.copiedAt));
        if (!out.flushPart())
            return;
    }
    out.flush();
}
