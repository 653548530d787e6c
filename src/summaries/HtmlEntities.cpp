// SPDX-License-Identifier: MIT
#include "HtmlEntities.h"

#include "Entities.h"

namespace
{

constexpr Entity htmlEntityTable[] = {
    {"&lt;", "<"},          {"&gt;", ">"},        {"&quot;", "\""},    {"&#39;", "'"},
    {"&apos;", "'"},        {"&nbsp;", " "},      {"&#x27;", "'"},     {"&#8211;", "\u2013"},
    {"&#8212;", "\u2014"},  {"&#8217;", "'"},     {"&#8220;", "\""},   {"&#8221;", "\""},
    {"&hellip;", "\u2026"}, {"&copy;", "\u00A9"}, {"&reg;", "\u00AE"},
};

} // namespace

std::string decodeHtmlEntities(std::string text)
{
    return decodeEntities(std::move(text), htmlEntityTable);
}
