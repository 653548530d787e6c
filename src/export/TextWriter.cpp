// SPDX-License-Identifier: MIT
#include "TextWriter.h"

#include "DateText.h"

#include <QStringEncoder>

using namespace Qt::StringLiterals;

namespace
{

/// Gathers lines and hands them on as UTF-8 in parts of a useful size.
class LineBuffer
{
public:
    explicit LineBuffer(const ByteSink &sink)
        : m_sink(sink)
    {
    }

    template <typename... Parts>
    void line(const Parts &...parts)
    {
        (m_text.append(parts), ...);
        m_text.append(u'\n');
    }
    /// False when nothing more is wanted.
    bool flush(qsizetype atLeast = 0)
    {
        if (m_text.size() < atLeast)
            return true;
        const QByteArray utf8 = m_encoder(m_text);
        m_text.clear();
        return m_sink(utf8);
    }

private:
    const ByteSink &m_sink;
    QString m_text;
    QStringEncoder m_encoder{QStringEncoder::Utf8};
};

constexpr qsizetype partSize = 32768;

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

void writeText(const ExportDocument &document, const ByteSink &sink)
{
    const DateText dates(document.locale, document.zone);
    LineBuffer out(sink);
    out.line(u"Strandloom Export"_s);
    out.line(u"Exported on "_s, dates.mediumDateShortTime(document.now));
    out.line(QString(50, u'='), u"\n"_s);
    for (const CapturedLink &link : document.links) {
        addText(out, link, document.layout, dates.mediumDateShortTime(link.copiedAt));
        if (!out.flush(partSize))
            return;
    }
    out.flush();
}

void writeMarkdown(const ExportDocument &document, const ByteSink &sink)
{
    const DateText dates(document.locale, document.zone);
    LineBuffer out(sink);
    out.line(u"# Strandloom Export\n"_s);
    out.line(u"_Exported on "_s, dates.mediumDateShortTime(document.now), u"_\n"_s);
    out.line(u"---\n"_s);
    for (const CapturedLink &link : document.links) {
        addMarkdown(out, link, dates.mediumDateShortTime(link.copiedAt));
        if (!out.flush(partSize))
            return;
    }
    out.flush();
}
