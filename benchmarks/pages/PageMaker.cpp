// SPDX-License-Identifier: MIT
#include "PageMaker.h"

#include <algorithm>
#include <iterator>

namespace
{

constexpr const char *vocabulary[] = {
    "the",   "river",    "of",     "bread",       "and",      "a",       "library", "opens",
    "in",    "winter",   "with",   "small",       "machines", "for",     "garden",  "readers",
    "who",   "mend",     "clocks", "because",     "every",    "morning", "light",   "Häuser",
    "naïve", "café",     "東京",   "&amp;",       "it&#39;s", "&nbsp;",  "&copy;",  "don’t",
    "–",     "&hellip;", "Женева", "👩‍🔬",
};

// clang-format off
constexpr const char *pieces[] = {
    "<", ">", "\"", "'", "/", "=", " ", "\n", "\r\n", "\t", "&", ";", "-->", "<!--", "<>", "</",
    "<title>", "</title>", "<TITLE lang=x>", "<meta ", "<meta name=\"description\" content=\"",
    "content='", "property='og:title' ", "name=\"twitter:title\"", "og:type", "og:site_name",
    "<nav>", "</nav>", "<a href=#>", "</a>", "<h1>", "</h2>", "<h2 class=x>", "</h1>",
    "<button>", "</button>", "<script>", "</script>", "<style>", "</style>", "<header>",
    "</header>", "<footer>", "</footer>", "<\u017Fcript>", "</\u017FCRIPT>", "<\uFB06yle>",
    "</\uFB05yle>", "de\u017Fcription", "$", "£", "€", "$1,299.00", "£ 5", "€12.5", "\u0663",
    "\u0966.\u0967\u0968", "\u00A0", "\u0085", "\u2003", "\u2028", "\u3000", "\u200B", "\uFEFF",
    "\u0301", "\u1F44", "\u0130", "K", "&amp;lt;", "&amp;", "&nbsp;", "&#8211;", "&quot;",
    "&apos;", "&#x27;", "&reg;", "&am", "p;", "👨‍👩‍👧", "🇨🇭", "\u0001",
};
// clang-format on

} // namespace

std::string PageMaker::words(std::size_t count)
{
    std::string text;
    while (count-- > 0) {
        text += vocabulary[below(std::size(vocabulary))];
        text += ' ';
    }
    return text;
}

std::string PageMaker::script(std::size_t size)
{
    std::string text = "<script type=\"text/javascript\">";
    while (text.size() < size)
        text += "if (a" + std::to_string(below(1000)) + " < b && $('.x').length > 2) { w.push({k:\""
            + words(4) + "\",v:[1,2,3]}); }\n";
    return text + "</script>\n";
}

std::string PageMaker::head()
{
    const auto meta = [this](const char *attribute, const char *name, const std::string &content) {
        const std::string named = std::string(attribute) + "=\"" + name + "\"";
        const std::string value = "content=\"" + content + "\"";
        return "<meta " + (chance(80) ? named + ' ' + value : value + ' ' + named) + ">\n";
    };
    std::string text = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n<title>"
        + words(5) + "</title>\n";
    if (chance(80))
        text += meta("name", "description", words(15 + below(30)));
    if (chance(70))
        text +=
            meta("property", "og:title", words(6)) + meta("property", "og:description", words(20));
    if (chance(40))
        text += meta("property", "og:type", "article") + meta("property", "og:site_name", words(2));
    if (chance(40))
        text +=
            meta("name", "twitter:title", words(6)) + meta("name", "twitter:description", words(9));
    for (int i = 0; i < 6; ++i)
        text += "<link rel=\"stylesheet\" href=\"/assets/" + std::to_string(below(100'000))
            + ".css\">\n";
    return text;
}

std::string PageMaker::navigation()
{
    std::string text =
        "<header class=\"top\"><a href=\"/\">Home</a></header>\n<nav class=\"main\"><ul>\n";
    for (int i = 0; i < 10; ++i)
        text += "<li><a href=\"/s/" + std::to_string(i) + "\" class=\"nav-link\">" + words(2)
            + "</a></li>\n";
    return text + "</ul></nav>\n";
}

std::string PageMaker::article()
{
    std::string text = "<article class=\"card card--wide\" data-id=\""
        + std::to_string(below(1'000'000)) + "\"><h2 class=\"title\">"
        + (chance(30) ? "<span>" + words(4) + "</span>" : words(4)) + "</h2>\n";
    for (std::size_t paragraphs = 1 + below(4); paragraphs > 0; --paragraphs)
        text += "<p>" + words(20 + below(60)) + "<a href=\"https://example.org/"
            + std::to_string(below(9999)) + "?a=1&amp;b=2\" rel=\"nofollow\">" + words(2)
            + "</a> <em>" + words(3) + "</em></p>\n";
    text += "<img src=\"/i/" + std::to_string(below(9999)) + ".webp\" alt=\"" + words(3)
        + "\" width=\"640\" height=\"360\" loading=\"lazy\"><!-- " + words(3) + "-->\n";
    if (chance(20))
        text += "<span class=\"price\">$" + std::to_string(below(2000)) + ".99</span>";
    if (chance(30))
        text += "<button type=\"button\" class=\"btn\">" + words(2) + "</button>";
    return text + "</article>\n";
}

std::string PageMaker::page(std::size_t size)
{
    std::string text = head() + script(size / 10) + "<style>";
    for (std::size_t rules = size / 600; rules > 0; --rules)
        text += ".c" + std::to_string(below(999)) + " > a{color:#333;margin:0 auto}\n";
    text += "</style></head>\n<body>" + navigation() + "<main><h1>" + words(5) + "</h1>\n";
    while (text.size() < size - size / 5)
        text += article();
    return text + "</main>\n" + script(size / 6) + "<footer><p>" + words(12)
        + "</p></footer></body></html>\n";
}

std::size_t PageMaker::boundaryIn(const std::string &page, std::size_t begin, std::size_t end)
{
    std::size_t at = begin + below(end - begin + 1);
    while (at < page.size() && (page[at] & 0xC0) == 0x80)
        ++at;
    return at;
}

std::string PageMaker::mutated(std::string page)
{
    for (std::size_t edits = 1 + below(12); edits > 0; --edits) {
        const std::size_t begin = boundaryIn(page, 0, page.size());
        const std::size_t reach = chance(80) ? begin + 300 : page.size();
        const std::size_t end = boundaryIn(page, begin, std::min(reach, page.size()));
        switch (below(6)) {
        case 0:
            page.erase(begin, end - begin);
            break;
        case 1:
            page.insert(end, page, begin, end - begin);
            break;
        case 2:
            std::transform(page.begin() + begin, page.begin() + end, page.begin() + begin,
                           [](unsigned char c) { return char(c < 0x80 ? std::toupper(c) : c); });
            break;
        default:
            page.insert(begin, pieces[below(std::size(pieces))]);
        }
    }
    return page;
}
