// SPDX-License-Identifier: MIT
#include "Digest.h"

#include "DateText.h"
#include "WebAddress.h"

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

// clang-format off
constexpr QStringView head = uR"(<!DOCTYPE html>
<html>
<head>
    <meta charset="utf-8">
    <meta name="viewport" content="width=device-width, initial-scale=1.0">
    <style>
        body { font-family: -apple-system, BlinkMacSystemFont, 'Segoe UI', Roboto, sans-serif; line-height: 1.6; color: #333; max-width: 600px; margin: 0 auto; padding: 20px; }
        h1 { color: #2563eb; font-size: 24px; margin-bottom: 8px; }
        .subtitle { color: #666; font-size: 14px; margin-bottom: 24px; }
        .link-card { background: #f8fafc; border-radius: 8px; padding: 16px; margin-bottom: 16px; border-left: 4px solid #2563eb; }
        .link-title { font-weight: 600; font-size: 16px; color: #1e293b; margin-bottom: 4px; }
        .link-summary { color: #475569; font-size: 14px; font-style: italic; margin: 8px 0; }
        .link-url { color: #2563eb; font-size: 13px; word-break: break-all; text-decoration: none; }
        .link-url:hover { text-decoration: underline; }
        .link-meta { color: #94a3b8; font-size: 12px; margin-top: 8px; }
        .footer { margin-top: 32px; padding-top: 16px; border-top: 1px solid #e2e8f0; font-size: 12px; color: #94a3b8; text-align: center; }
    </style>
</head>
<body>
    <h1>🔗 Your Strandloom Digest</h1>
    <p class="subtitle">)";
// clang-format on

constexpr qsizetype headRoom = 1267;
constexpr qsizetype cardRoom = 60 + 34 + 90;

QStringView entityOf(QChar character)
{
    switch (character.unicode()) {
    case u'&':
        return u"&amp;";
    case u'<':
        return u"&lt;";
    case u'>':
        return u"&gt;";
    case u'"':
        return u"&quot;";
    default:
        return {};
    }
}

void appendEscaped(QString &html, QStringView text)
{
    qsizetype begin = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text.at(at) > u'>') // as most are
            continue;
        const QStringView entity = entityOf(text.at(at));
        if (entity.isEmpty())
            continue;
        html += text.sliced(begin, at - begin);
        html += entity;
        begin = at + 1;
    }
    html += text.sliced(begin);
}

void appendCard(QString &html, const CapturedLink &link, const DateText &dates)
{
    const QString host = hostOf(link.url);
    html += u"<div class=\"link-card\">\n    <div class=\"link-title\">"_s;
    appendEscaped(html, displayTitle(link));
    html += u"</div>"_s;
    if (link.summary) {
        html += u"<div class=\"link-summary\">"_s;
        appendEscaped(html, *link.summary);
        html += u"</div>"_s;
    }
    html += u"    <a href=\""_s % link.url % u"\" class=\"link-url\">"_s;
    appendEscaped(html, link.url);
    html += u"</a>\n    <div class=\"link-meta\">"_s;
    appendEscaped(html, host);
    html += u" • "_s % dates.mediumDateShortTime(link.copiedAt) % u"</div>\n</div>"_s;
}

void appendFooter(QString &html, const QString &productSite)
{
    html += u"    <div class=\"footer\">\n"_s;
    html += u"        <p>Sent by <a href=\""_s % productSite % u"\">Strandloom</a></p>\n"_s;
    html += u"        <p>Capture every link. Never lose an idea.</p>\n"_s;
    html += u"    </div>\n</body>\n</html>"_s;
}

} // namespace

QString composeDigestHTML(const QList<CapturedLink> &links, const DigestContext &context)
{
    std::vector<const CapturedLink *> newestFirst;
    newestFirst.reserve(links.size());
    for (const CapturedLink &link : links)
        newestFirst.push_back(&link);
    std::ranges::stable_sort(newestFirst, std::ranges::greater(), &CapturedLink::copiedAt);
    const DateText dates(context.locale, context.zone);
    QString html;
    html.reserve(headRoom + cardRoom * links.size());
    html += head;
    html += dates.longDate(context.now) % u" • " % QString::number(links.size());
    html += links.size() == 1 ? u" link</p>"_s : u" links</p>"_s;
    for (const CapturedLink *const link : newestFirst)
        appendCard(html, *link, dates);
    appendFooter(html, context.productSite);
    return html;
}

QString digestSubject(const DigestContext &context)
{
    const DateText dates(context.locale, context.zone);
    return u"Your Strandloom Digest – " % dates.longDate(context.now);
}

QString escapeHTML(const QString &text)
{
    QString html;
    html.reserve(text.size());
    appendEscaped(html, text);
    return html;
}
