// SPDX-License-Identifier: MIT
#include "LinkStream.h"

#include "LinkJson.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype partSize = 32768;

QByteArray jsonLine(const CapturedLink &link)
{
    return jsonOf(link).prepend('\n');
}

/// On one line, whatever the text holds.
QString bookmarkText(const QString &text)
{
    return text.simplified().toHtmlEscaped();
}

QByteArray bookmark(const CapturedLink &link)
{
    const auto date = std::chrono::floor<std::chrono::seconds>(link.copiedAt).time_since_epoch();
    QString lines = u"    <DT><A HREF=\"%1\" ADD_DATE=\"%2\">%3</A>\n"_s.arg(
        link.url.toHtmlEscaped(), QString::number(date.count()), bookmarkText(displayTitle(link)));
    if (link.summary)
        lines += u"    <DD>" + bookmarkText(*link.summary) + u'\n';
    return lines.toUtf8();
}

constexpr auto bookmarksHead = R"(<!DOCTYPE NETSCAPE-Bookmark-file-1>
<META HTTP-EQUIV="Content-Type" CONTENT="text/html; charset=UTF-8">
<TITLE>Bookmarks</TITLE>
<H1>Bookmarks</H1>
<DL><p>
)";

} // namespace

const LinkFormat jsonFormat{"[", jsonLine, ",", "\n]\n"};
const LinkFormat netscapeFormat{bookmarksHead, bookmark, "", "</DL><p>\n"};

LinkStream::LinkStream(const LinkFormat &format, const ByteSink &sink)
    : m_format(format)
    , m_sink(sink)
    , m_part(format.head.toByteArray())
{
}

bool LinkStream::write(const CapturedLink &link)
{
    m_part.append(std::exchange(m_separator, m_format.separator));
    m_part.append(m_format.link(link));
    return m_part.size() < partSize || m_sink(std::exchange(m_part, {}));
}

bool LinkStream::end()
{
    return m_sink(m_part.append(m_format.tail));
}
