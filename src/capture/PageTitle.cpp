// SPDX-License-Identifier: MIT
#include "PageTitle.h"

#include "Entities.h"
#include "Markup.h"
#include "WhiteSpace.h"

namespace
{

constexpr Entity titleEntities[] = {
    {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&nbsp;", " "},
};

std::optional<std::string_view> titleElement(std::string_view html)
{
    ElementTexts titles(html, {"title"}, 1);
    TagScanner tags(html, {"title"});
    auto tag = tags.next();
    for (; tag && !titles.isFull(); tag = tags.next())
        titles.take(*tag);
    return titles.isFull() ? std::optional(titles.found().front()) : std::nullopt;
}

Metas metasOf(std::string_view html)
{
    Metas metas(html);
    TagScanner tags(html, {"meta"});
    while (const auto tag = tags.next())
        metas.take(*tag);
    return metas;
}

/// Absent when nothing is left of it.
std::optional<std::string> readable(std::optional<std::string_view> text)
{
    if (!text)
        return std::nullopt;
    // Trimmed before decoding: the space of a "&nbsp;" at the end stays.
    std::string title = decodeEntities(std::string(trimmed(*text)), titleEntities);
    return title.empty() ? std::nullopt : std::optional(std::move(title));
}

} // namespace

std::optional<std::string> extractTitle(std::string_view html)
{
    if (auto title = readable(titleElement(html)))
        return title;
    const Metas metas = metasOf(html);
    for (const ContentPlace place : {ContentPlace::behind, ContentPlace::inFront}) {
        if (auto title = readable(metas.content("property", "og:title", place)))
            return title;
    }
    return std::nullopt;
}
