// SPDX-License-Identifier: MIT
#include "MainText.h"

#include "Characters.h"
#include "HtmlEntities.h"
#include "Markup.h"
#include "WhiteSpace.h"

#include <optional>

namespace
{

constexpr std::size_t maxCharacters = 1500;
/// In bytes; hardly any text needs more for its first characters.
constexpr std::size_t mostlyEnough = 4 * maxCharacters;

/// In the order in which they are removed: what one removal joins can be a block for the next.
constexpr BlockPattern removedBlockPatterns[] = {
    {"<script", BlockPattern::Start::tag, "</script>"},
    {"<style", BlockPattern::Start::tag, "</style>"},
    {"<!--", BlockPattern::Start::text, "-->"},
    {"<nav", BlockPattern::Start::tag, "</nav>"},
    {"<footer", BlockPattern::Start::tag, "</footer>"},
    {"<header", BlockPattern::Start::tag, "</header>"},
};

/// What a reader of a part of a page sees, but for entities and white space.
PagePart visibleText(PagePart part)
{
    for (const BlockPattern &pattern : removedBlockPatterns)
        part = withoutBlocks(std::move(part), pattern);
    return withoutTags(std::move(part));
}

std::string_view withoutOuterBlanks(std::string_view text)
{
    constexpr const char *blanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text.remove_suffix(text.size() - (text.find_last_not_of(blanks) + 1));
    return text;
}

/// The first characters of the words of `text`; absent where they depend on what may follow.
std::optional<std::string> firstWords(PagePart text)
{
    if (!text.isWhole) // an entity or a word may go on behind the last space
        text.text.resize(text.text.find_last_of(" \n") + 1);
    const std::string words = simplified(decodeHtmlEntities(std::move(text.text)));
    const std::string_view start = firstCharacters(words, maxCharacters);
    if (!text.isWhole && start.size() == words.size())
        return std::nullopt;
    return std::string(withoutOuterBlanks(start));
}

} // namespace

std::string mainText(std::string_view html, std::size_t firstPart)
{
    for (std::size_t size = firstPart;; size *= 4) {
        PagePart text = visibleText({std::string(html.substr(0, size)), size >= html.size()});
        if (text.text.size() > mostlyEnough) {
            if (auto words = firstWords({text.text.substr(0, mostlyEnough), false}))
                return *words;
        }
        if (auto words = firstWords(std::move(text)))
            return *words;
    }
}
