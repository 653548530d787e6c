// SPDX-License-Identifier: MIT
#include "Digest.h"

#include "DateText.h"
#include "WebAddress.h"

#include <algorithm>

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

QLatin1StringView entityOf(QChar character)
{
    switch (character.unicode()) {
    case u'&':
        return QLatin1StringView("&amp;");
    case u'<':
        return QLatin1StringView("&lt;");
    case u'>':
        return QLatin1StringView("&gt;");
    case u'"':
        return QLatin1StringView("&quot;");
    default:
        return {};
    }
}

void appendEscaped(QString &html, QStringView text)
{
    qsizetype begin = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QLatin1StringView entity = entityOf(text.at(at));
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
    html += QLatin1StringView("<div class=\"link-card\">\n    <div class=\"link-title\">");
    appendEscaped(html, displayTitle(link));
    html += QLatin1StringView("</div>");
    if (link.summary) {
        html += QLatin1StringView("<div class=\"link-summary\">");
        appendEscaped(html, *link.summary);
        html += QLatin1StringView("</div>");
    }
    html += QLatin1StringView("    <a href=\"") % link.url
        % QLatin1StringView("\" class=\"link-url\">");
    appendEscaped(html, link.url);
    html += QLatin1StringView("</a>\n    <div class=\"link-meta\">");
    appendEscaped(html, host);
    html += u" • " % dates.mediumDateShortTime(link.copiedAt) % QLatin1StringView("</div>\n</div>");
}

void appendFooter(QString &html, const QString &productSite)
{
    html += QLatin1StringView("    <div class=\"footer\">\n");
    html += QLatin1StringView("        <p>Sent by <a href=\"") % productSite
        % QLatin1StringView("\">Strandloom</a></p>\n");
    html += QLatin1StringView("        <p>Capture every link. Never lose an idea.</p>\n");
    html += QLatin1StringView("    </div>\n</body>\n</html>");
}

} // namespace

QString composeDigestHTML(QList<CapturedLink> links, const DigestContext &context)
{
    std::stable_sort(links.begin(), links.end(), [](const auto &one, const auto &other) {
        return one.copiedAt > other.copiedAt;
    });
    const DateText dates(context.locale, context.zone);
    QString html;
    html.reserve(headRoom + cardRoom * links.size());
    html += head;
    html += dates.longDate(context.now) % u" • " % QString::number(links.size());
    html += links.size() == 1 ? QLatin1StringView(" link</p>") : QLatin1StringView(" links</p>");
    for (const CapturedLink &link : std::as_const(links))
        appendCard(html, link, dates);
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
