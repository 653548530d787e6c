// SPDX-License-Identifier: MIT
#include "MainText.h"

#include "Characters.h"
#include "HtmlEntities.h"
#include "Markup.h"
#include "WhiteSpace.h"

namespace
{

constexpr std::size_t maxCharacters = 1500;

/// In the order in which they are removed: what one removal joins can be a block for the next.
constexpr BlockPattern removedBlockPatterns[] = {
    {"<script", BlockPattern::Start::tag, "</script>"},
    {"<style", BlockPattern::Start::tag, "</style>"},
    {"<!--", BlockPattern::Start::text, "-->"},
    {"<nav", BlockPattern::Start::tag, "</nav>"},
    {"<footer", BlockPattern::Start::tag, "</footer>"},
    {"<header", BlockPattern::Start::tag, "</header>"},
};

/// The words of a part of a page; of one that is not whole, those that do not depend on the rest.
std::string readableText(PagePart part)
{
    for (const BlockPattern &pattern : removedBlockPatterns)
        part = withoutBlocks(std::move(part), pattern);
    part = withoutTags(std::move(part));
    if (!part.isWhole) // an entity or a word may go on behind the last space
        part.text.resize(part.text.find_last_of(" \n") + 1);
    return simplified(decodeHtmlEntities(std::move(part.text)));
}

std::string_view withoutOuterBlanks(std::string_view text)
{
    constexpr const char *blanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text.remove_suffix(text.size() - (text.find_last_not_of(blanks) + 1));
    return text;
}

} // namespace

std::string mainText(std::string_view html, std::size_t firstPart)
{
    for (std::size_t size = firstPart;; size *= 4) {
        const bool isWhole = size >= html.size();
        const std::string text = readableText({std::string(html.substr(0, size)), isWhole});
        const std::string_view start = firstCharacters(text, maxCharacters);
        if (isWhole || start.size() < text.size())
            return std::string(withoutOuterBlanks(start));
    }
}
