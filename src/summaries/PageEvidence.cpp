// SPDX-License-Identifier: MIT
#include "PageEvidence.h"

#include "Characters.h"
#include "HtmlEntities.h"
#include "MainText.h"
#include "Markup.h"
#include "PageText.h"
#include "Pattern.h"
#include "WhiteSpace.h"

using namespace Qt::StringLiterals;

namespace
{

/// The content of the meta element whose attribute has a value, the attribute first or the content.
struct MetaPattern {
    Pattern attributeFirst;
    Pattern contentFirst;

    MetaPattern(const std::string &attribute, const std::string &value)
        : attributeFirst(R"(<meta[^>]*)" + attribute + R"(=["'])" + value
                         + R"(["'][^>]*content=["']([^"']+)["'])")
        , contentFirst(R"(<meta[^>]*content=["']([^"']+)["'][^>]*)" + attribute + R"(=["'])" + value
                       + R"(["'])")
    {
    }
};

struct PagePatterns {
    Pattern title{R"(<title[^>]*>([^<]+)</title>)"};
    MetaPattern description{"name", "description"};
    MetaPattern ogTitle{"property", "og:title"};
    MetaPattern ogDescription{"property", "og:description"};
    MetaPattern ogType{"property", "og:type"};
    MetaPattern siteName{"property", "og:site_name"};
    MetaPattern twitterTitle{"name", "twitter:title"};
    MetaPattern twitterDescription{"name", "twitter:description"};
    Pattern heading{R"(<h[12][^>]*>([^<]+)</h[12]>)"};
    Pattern link{R"(<a[^>]*>([^<]+)</a>)"};
    Pattern button{R"(<button[^>]*>([^<]+)</button>)"};
    // White space and digits of all scripts
    Pattern price{R"([$£€][\t-\r\x{85}\p{Z}]*[\p{Nd},]+(?:\.\p{Nd}{2})?)"};
};

constexpr BlockPattern navigation{"<nav", BlockPattern::Start::tag, "</nav>"};

std::string clean(std::string_view text)
{
    return std::string(trimmed(decodeHtmlEntities(std::string(text))));
}

std::optional<QString> cleaned(std::optional<std::string_view> text)
{
    return text ? std::optional(toQString(clean(*text))) : std::nullopt;
}

std::optional<QString> metaContent(std::string_view metas, const MetaPattern &pattern)
{
    const auto content = pattern.attributeFirst.firstCapture(metas);
    return cleaned(content ? content : pattern.contentFirst.firstCapture(metas));
}

/// Those of `texts` that, cleaned, are not empty and have fewer than `limit` characters.
QStringList labels(const std::vector<std::string_view> &texts, std::size_t limit)
{
    QStringList kept;
    for (const std::string_view text : texts) {
        const std::string label = clean(text);
        if (!label.empty() && hasFewerCharacters(std::string_view(label), limit))
            kept.append(toQString(label));
    }
    return kept;
}

QStringList navLabels(std::string_view html, const Pattern &link)
{
    const auto nav = firstBlock(html, navigation);
    if (!nav)
        return {};
    const auto inner = html.substr(nav->innerBegin, nav->innerEnd - nav->innerBegin);
    return labels(link.captures(inner, 8), 30);
}

QString classifyPageType(const EvidencePacket &packet)
{
    if (packet.ogType && !packet.ogType->isEmpty())
        return *packet.ogType;
    if (!packet.pricingText.isEmpty())
        return u"product"_s;
    return packet.headings.size() >= 4 ? u"article"_s : u"webpage"_s;
}

} // namespace

EvidencePacket parsePacket(std::string_view html, const QString &url, Instant now)
{
    static const PagePatterns patterns;
    const std::string metas = metaParts(html);

    EvidencePacket packet(url, now);
    packet.title = cleaned(patterns.title.firstCapture(html));
    packet.metaDescription = metaContent(metas, patterns.description);
    packet.ogTitle = metaContent(metas, patterns.ogTitle);
    packet.ogDescription = metaContent(metas, patterns.ogDescription);
    packet.ogType = metaContent(metas, patterns.ogType);
    packet.siteName = metaContent(metas, patterns.siteName);
    if (!packet.ogTitle)
        packet.ogTitle = metaContent(metas, patterns.twitterTitle);
    if (!packet.ogDescription)
        packet.ogDescription = metaContent(metas, patterns.twitterDescription);
    for (const std::string_view heading : patterns.heading.captures(html, 5))
        packet.headings.append(toQString(clean(heading)));
    packet.navLabels = navLabels(html, patterns.link);
    packet.ctaButtons = labels(patterns.button.captures(html, 5), 50);
    for (const std::string_view price : patterns.price.captures(html, 3))
        packet.pricingText.append(toQString(price));
    packet.extractedText = toQString(mainText(html));
    packet.pageType = classifyPageType(packet);
    return packet;
}
