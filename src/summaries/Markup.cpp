// SPDX-License-Identifier: MIT
#include "Markup.h"

#include <algorithm>

namespace
{

constexpr std::size_t npos = std::string_view::npos;

constexpr char lowerCase(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter | 0x20) : letter;
}

/// The length of the `word` that `text` begins with, but for case; 0 when it does not. Folding case
/// makes an s of the long s, and st of two ligatures.
std::size_t prefixLength(std::string_view text, std::string_view word)
{
    std::size_t at = 0;
    for (; !word.empty(); word.remove_prefix(1)) {
        const std::string_view rest = text.substr(at);
        if (!rest.empty() && lowerCase(rest.front()) == word.front()) {
            ++at;
        } else if (word.front() == 's' && rest.starts_with("\u017F")) {
            at += 2;
        } else if (word.starts_with("st")
                   && (rest.starts_with("\uFB05") || rest.starts_with("\uFB06"))) {
            at += 3;
            word.remove_prefix(1);
        } else {
            return 0;
        }
    }
    return at;
}

struct Found {
    std::size_t begin = npos;
    std::size_t end = npos;

    explicit operator bool() const { return begin != npos; }
};

/// `word` begins with a character that has one case only.
Found find(std::string_view text, std::string_view word, std::size_t from)
{
    for (auto at = text.find(word.front(), from); at != npos;
         at = text.find(word.front(), at + 1)) {
        if (const std::size_t length = prefixLength(text.substr(at), word))
            return {at, at + length};
    }
    return {};
}

/// The next block; with `end` npos one that has a start and no end.
std::optional<Block> nextBlock(std::string_view html, const BlockPattern &pattern, std::size_t from)
{
    const Found start = find(html, pattern.start, from);
    if (!start)
        return std::nullopt;
    std::size_t inner = start.end;
    if (pattern.kind == BlockPattern::Start::tag) {
        const std::size_t tagEnd = html.find('>', inner);
        if (tagEnd == npos)
            return Block{start.begin, npos, npos, npos};
        inner = tagEnd + 1;
    }
    const Found end = find(html, pattern.end, inner);
    return Block{start.begin, inner, end.begin, end.end};
}

} // namespace

std::optional<Block> firstBlock(std::string_view html, const BlockPattern &pattern)
{
    const auto block = nextBlock(html, pattern, 0);
    return block && block->end != npos ? block : std::nullopt;
}

PagePart withoutBlocks(PagePart part, const BlockPattern &pattern)
{
    std::string kept;
    std::size_t from = 0;
    auto block = nextBlock(part.text, pattern, from);
    while (block && block->end != npos) {
        kept.append(part.text, from, block->begin - from) += ' ';
        from = block->end;
        block = nextBlock(part.text, pattern, from);
    }
    if (from == 0 && part.isWhole)
        return part;
    const bool isOpen = block && !part.isWhole; // its end may be in the rest
    kept.append(part.text, from, isOpen ? block->begin - from : npos);
    return {std::move(kept), part.isWhole};
}

PagePart withoutTags(PagePart part)
{
    const std::string_view text = part.text;
    std::string kept;
    std::size_t from = 0;
    std::size_t begin = text.find('<');
    while (begin != npos) {
        const std::size_t end = text.find('>', begin + 1);
        if (end == npos)
            break;
        if (end > begin + 1) {
            kept.append(text, from, begin - from) += ' ';
            from = end + 1;
        }
        begin = text.find('<', end + 1);
    }
    const bool isOpen = begin != npos && !part.isWhole;
    kept.append(text, from, isOpen ? begin - from : npos);
    return {std::move(kept), part.isWhole};
}

std::string metaParts(std::string_view html)
{
    // From "<meta" the attributes reach up to the next '>', a value of `content` that began there
    // up to the next quote, and attributes behind it up to the '>' after that. The three only ever
    // move on, so the page is read a fixed number of times.
    std::string parts;
    std::size_t copied = 0;
    std::size_t tagEnd = 0;
    std::size_t valueEnd = 0;
    std::size_t end = 0;
    const auto follow = [html](std::size_t &at, const char *characters, std::size_t from) {
        if (at < from)
            at = html.find_first_of(characters, from);
    };
    for (Found meta = find(html, "<meta", 0); meta && copied < html.size();
         meta = find(html, "<meta", meta.end)) {
        follow(tagEnd, ">", meta.end);
        follow(valueEnd, "\"'", tagEnd);
        follow(end, ">", valueEnd);
        const std::size_t begin = std::max(copied, meta.begin);
        const std::size_t partEnd = end == npos ? html.size() : end + 1;
        if (partEnd > begin) {
            parts.append(html, begin, partEnd - begin);
            copied = partEnd;
        }
    }
    return parts;
}
