// SPDX-License-Identifier: MIT
#include "ReferencePacket.h"

#include "IcuPattern.h"

#include <map>
#include <unicode/brkiter.h>

using namespace Qt::StringLiterals;

namespace
{

const IcuPattern &pattern(const QString &expression)
{
    static std::map<QString, IcuPattern> patterns;
    return patterns.try_emplace(expression, expression).first->second;
}

QStringList allMatches(const QString &html, const QString &expression, int limit)
{
    return pattern(expression).captures(html, limit);
}

QString decodeEntities(QString text)
{
    const std::pair<const char *, char16_t> table[] = {
        {"&amp;", u'&'},   {"&lt;", u'<'},     {"&gt;", u'>'},     {"&quot;", u'"'},
        {"&#39;", u'\''},  {"&apos;", u'\''},  {"&nbsp;", u' '},   {"&#x27;", u'\''},
        {"&#8211;", u'–'}, {"&#8212;", u'—'},  {"&#8217;", u'\''}, {"&#8220;", u'"'},
        {"&#8221;", u'"'}, {"&hellip;", u'…'}, {"&copy;", u'©'},   {"&reg;", u'®'},
    };
    for (const auto &[entity, character] : table)
        text.replace(QLatin1StringView(entity), QString(QChar(character)));
    return text;
}

QString clean(const QString &text)
{
    return decodeEntities(text).trimmed();
}

std::optional<QString> cleanFirst(const QString &html, const QString &expression)
{
    const QStringList found = allMatches(html, expression, 1);
    return found.isEmpty() ? std::nullopt : std::optional(clean(found.first()));
}

std::optional<QString> metaContent(const QString &html, const QString &attribute,
                                   const QString &value)
{
    const QString named = attribute + uR"(=["'])"_s + value + uR"(["'])"_s;
    const QString content = uR"(content=["']([^"']+)["'])"_s;
    const auto found = cleanFirst(html, u"<meta[^>]*"_s + named + u"[^>]*"_s + content);
    return found ? found : cleanFirst(html, u"<meta[^>]*"_s + content + u"[^>]*"_s + named);
}

/// Where each user-perceived character ends.
QList<int> characterEnds(const QString &text)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> iterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    const icu::UnicodeString units(reinterpret_cast<const char16_t *>(text.utf16()), text.size());
    iterator->setText(units);
    QList<int> ends;
    for (int end = iterator->next(); end != icu::BreakIterator::DONE; end = iterator->next())
        ends.append(end);
    return ends;
}

QStringList labels(const QStringList &texts, int limit)
{
    QStringList kept;
    for (const QString &text : texts) {
        const QString label = clean(text);
        if (!label.isEmpty() && characterEnds(label).size() < limit)
            kept.append(label);
    }
    return kept;
}

QString mainText(QString html)
{
    for (const QString &block :
         {u"<script[^>]*>[\\s\\S]*?</script>"_s, u"<style[^>]*>[\\s\\S]*?</style>"_s,
          u"<!--[\\s\\S]*?-->"_s, u"<nav[^>]*>[\\s\\S]*?</nav>"_s,
          u"<footer[^>]*>[\\s\\S]*?</footer>"_s, u"<header[^>]*>[\\s\\S]*?</header>"_s,
          u"<[^>]+>"_s})
        html = pattern(block).blanked(html);
    const QString text = decodeEntities(html).simplified();
    const QList<int> ends = characterEnds(text);
    const QString start = ends.size() > 1500 ? text.first(ends.at(1499)) : text;
    return start.endsWith(u' ') ? start.chopped(1) : start;
}

} // namespace

EvidencePacket referencePacket(const QString &html, const QString &url, Instant now)
{
    EvidencePacket packet(url, now);
    packet.title = cleanFirst(html, u"<title[^>]*>([^<]+)</title>"_s);
    packet.metaDescription = metaContent(html, u"name"_s, u"description"_s);
    packet.ogTitle = metaContent(html, u"property"_s, u"og:title"_s);
    packet.ogDescription = metaContent(html, u"property"_s, u"og:description"_s);
    packet.ogType = metaContent(html, u"property"_s, u"og:type"_s);
    packet.siteName = metaContent(html, u"property"_s, u"og:site_name"_s);
    if (!packet.ogTitle)
        packet.ogTitle = metaContent(html, u"name"_s, u"twitter:title"_s);
    if (!packet.ogDescription)
        packet.ogDescription = metaContent(html, u"name"_s, u"twitter:description"_s);
    for (const QString &heading : allMatches(html, u"<h[12][^>]*>([^<]+)</h[12]>"_s, 5))
        packet.headings.append(clean(heading));
    const QStringList nav = allMatches(html, u"<nav[^>]*>([\\s\\S]*?)</nav>"_s, 1);
    packet.navLabels = labels(allMatches(nav.value(0), u"<a[^>]*>([^<]+)</a>"_s, 8), 30);
    packet.ctaButtons = labels(allMatches(html, u"<button[^>]*>([^<]+)</button>"_s, 5), 50);
    packet.pricingText = allMatches(html, u"[\\$\\£\\€]\\s*[\\d,]+(?:\\.\\d{2})?"_s, 3);
    packet.extractedText = mainText(html);
    packet.pageType = packet.ogType && !packet.ogType->isEmpty() ? *packet.ogType
        : !packet.pricingText.isEmpty()                          ? u"product"_s
        : packet.headings.size() >= 4                            ? u"article"_s
                                                                 : u"webpage"_s;
    return packet;
}
