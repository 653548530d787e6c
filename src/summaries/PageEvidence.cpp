// SPDX-License-Identifier: MIT
#include "PageEvidence.h"

#include "Characters.h"
#include "HtmlEntities.h"
#include "MainText.h"
#include "Markup.h"
#include "Prices.h"
#include "Utf8.h"
#include "WhiteSpace.h"

using namespace Qt::StringLiterals;

namespace
{

constexpr BlockPattern navigation{"<nav", BlockPattern::Start::tag, "</nav>"};

std::string clean(std::string_view text)
{
    return std::string(trimmed(decodeHtmlEntities(std::string(text))));
}

std::optional<QString> cleaned(std::optional<std::string_view> text)
{
    return text ? std::optional(readUtf8(clean(*text))) : std::nullopt;
}

std::optional<QString> metaContent(const Metas &metas, std::string_view attribute,
                                   std::string_view value)
{
    const auto behind = metas.content(attribute, value, ContentPlace::behind);
    return cleaned(behind ? behind : metas.content(attribute, value, ContentPlace::inFront));
}

/// Those of `texts` that, cleaned, are not empty and have fewer than `limit` characters.
QStringList labels(const std::vector<std::string_view> &texts, std::size_t limit)
{
    QStringList kept;
    for (const std::string_view text : texts) {
        const std::string label = clean(text);
        if (!label.empty() && hasFewerCharacters(std::string_view(label), limit))
            kept.append(readUtf8(label));
    }
    return kept;
}

QStringList navLabels(std::string_view html, std::size_t from)
{
    const auto nav = firstBlock(html, navigation, from);
    if (!nav)
        return {};
    const auto inner = html.substr(nav->innerBegin, nav->innerEnd - nav->innerBegin);
    ElementTexts links(inner, {"a"}, 8);
    TagScanner tags(inner, {"a"});
    auto tag = tags.next();
    for (; tag && !links.isFull(); tag = tags.next())
        links.take(*tag);
    return labels(links.found(), 30);
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
    ElementTexts titles(html, {"title"}, 1);
    ElementTexts headings(html, {"h1", "h2"}, 5);
    ElementTexts buttons(html, {"button"}, 5);
    Metas metas(html);
    std::size_t firstNav = html.size();
    TagScanner tags(html, {"title", "meta", "h1", "h2", "button", "nav"});
    while (const auto tag = tags.next()) {
        if (tag->name == "title")
            titles.take(*tag);
        else if (tag->name == "meta")
            metas.take(*tag);
        else if (tag->name == "button")
            buttons.take(*tag);
        else if (tag->name == "nav")
            firstNav = std::min(firstNav, tag->at);
        else
            headings.take(*tag);
    }

    EvidencePacket packet(url, now);
    if (!titles.found().empty())
        packet.title = readUtf8(clean(titles.found().front()));
    packet.metaDescription = metaContent(metas, "name", "description");
    packet.ogTitle = metaContent(metas, "property", "og:title");
    packet.ogDescription = metaContent(metas, "property", "og:description");
    packet.ogType = metaContent(metas, "property", "og:type");
    packet.siteName = metaContent(metas, "property", "og:site_name");
    if (!packet.ogTitle)
        packet.ogTitle = metaContent(metas, "name", "twitter:title");
    if (!packet.ogDescription)
        packet.ogDescription = metaContent(metas, "name", "twitter:description");
    for (const std::string_view heading : headings.found())
        packet.headings.append(readUtf8(clean(heading)));
    packet.navLabels = navLabels(html, firstNav);
    packet.ctaButtons = labels(buttons.found(), 50);
    for (const std::string_view price : prices(html, 3))
        packet.pricingText.append(readUtf8(price));
    packet.extractedText = readUtf8(mainText(html));
    packet.pageType = classifyPageType(packet);
    return packet;
}
