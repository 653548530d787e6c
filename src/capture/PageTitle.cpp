// SPDX-License-Identifier: MIT
#include "PageTitle.h"

#include "Entities.h"
#include "Pattern.h"
#include "WhiteSpace.h"

namespace
{

/// In the order in which they are tried.
const auto &titlePatterns()
{
    static const Pattern patterns[] = {
        Pattern(R"(<title[^>]*>([^<]+)</title>)"),
        Pattern(R"(<meta[^>]*property=["']og:title["'][^>]*content=["']([^"']+)["'])"),
        Pattern(R"(<meta[^>]*content=["']([^"']+)["'][^>]*property=["']og:title["'])"),
    };
    return patterns;
}

constexpr Entity titleEntities[] = {
    {"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&nbsp;", " "},
};

} // namespace

std::optional<std::string> extractTitle(std::string_view html)
{
    for (const Pattern &pattern : titlePatterns()) {
        const auto found = pattern.firstCapture(html);
        if (!found)
            continue;
        // Trimmed before decoding: the space of a "&nbsp;" at the end stays.
        std::string title = decodeEntities(std::string(trimmed(*found)), titleEntities);
        if (!title.empty())
            return title;
    }
    return std::nullopt;
}
