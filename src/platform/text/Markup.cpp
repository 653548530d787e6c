// SPDX-License-Identifier: MIT
#include "Markup.h"

#include <algorithm>
#include <iterator>

namespace
{

constexpr std::size_t npos = std::string_view::npos;

constexpr std::string_view contentName = "content";
constexpr std::string_view nameName = "name";
constexpr std::string_view propertyName = "property";

constexpr char lowerCase(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter | 0x20) : letter;
}

constexpr bool isAscii(char byte)
{
    return static_cast<unsigned char>(byte) < 0x80;
}

constexpr bool isQuote(char byte)
{
    return byte == '"' || byte == '\'';
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

/// The same for a word without an s.
bool startsWith(std::string_view text, std::string_view word)
{
    return text.size() >= word.size()
        && std::equal(word.begin(), word.end(), text.begin(),
                      [](char letter, char byte) { return letter == lowerCase(byte); });
}

bool endsWith(std::string_view text, std::string_view word)
{
    return text.size() >= word.size() && startsWith(text.substr(text.size() - word.size()), word);
}

struct Found {
    std::size_t begin = npos;
    std::size_t end = npos;

    explicit operator bool() const { return begin != npos; }
};

/// Where the character at `at`, which is not the last, stands next. Rows of it take no search each.
std::size_t nextLike(std::string_view text, std::size_t at)
{
    return text[at + 1] == text[at] ? at + 1 : text.find(text[at], at + 1);
}

/// `word` begins with a character that has one case only.
Found find(std::string_view text, std::string_view word, std::size_t from)
{
    const char second = word[1];
    for (auto at = text.find(word.front(), from); at != npos && at + 1 < text.size();
         at = nextLike(text, at)) {
        const char next = text[at + 1];
        if (lowerCase(next) != second && isAscii(next))
            continue;
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

TagScanner::TagScanner(std::string_view html, std::initializer_list<std::string_view> names)
    : m_html(html)
    , m_names(names)
{
    for (const std::string_view name : m_names)
        m_isInitial[name.front() & 0x1F] = true;
}

std::optional<TagStart> TagScanner::next()
{
    for (auto at = m_html.find('<', m_from); at != npos && at + 1 < m_html.size();
         at = nextLike(m_html, at)) {
        const char initial = m_html[at + 1];
        if (!isAscii(initial) || !m_isInitial[initial & 0x1F])
            continue;
        for (const std::string_view name : m_names) {
            if (startsWith(m_html.substr(at + 1), name)) {
                m_from = at + 1;
                return TagStart{at, name};
            }
        }
    }
    m_from = m_html.size();
    return std::nullopt;
}

ElementTexts::ElementTexts(std::string_view html, std::initializer_list<std::string_view> names,
                           std::size_t limit)
    : m_html(html)
    , m_names(names)
    , m_limit(limit)
{
}

void ElementTexts::take(const TagStart &tag)
{
    if (isFull() || tag.at < m_end)
        return;
    const std::size_t tagEnd = m_tagEnds.from(tag.end());
    const std::size_t textEnd = tagEnd == npos ? npos : m_textEnds.from(tagEnd + 1);
    if (textEnd == npos || textEnd == tagEnd + 1 || !m_html.substr(textEnd).starts_with("</"))
        return;
    const std::string_view closing = m_html.substr(textEnd + 2);
    for (const std::string_view name : m_names) {
        if (startsWith(closing, name) && closing.substr(name.size()).starts_with('>')) {
            m_found.push_back(m_html.substr(tagEnd + 1, textEnd - tagEnd - 1));
            m_end = textEnd + 2 + name.size() + 1;
        }
    }
}

void Metas::take(const TagStart &tag)
{
    const std::size_t end = std::min(m_ends.from(tag.end()), m_html.size());
    if (end == m_lastEnd)
        return; // a part of the one before, so it says no more
    m_lastEnd = end;
    Meta meta{end, {}, {}};
    for (const Attribute &attribute : attributes(tag.end(), end)) {
        if (attribute.name != contentName) {
            meta.named.push_back(attribute);
            continue;
        }
        const std::size_t valueEnd = quoteFrom(attribute.valueBegin);
        if (valueEnd != npos && valueEnd > attribute.valueBegin)
            meta.contents.push_back({attribute.begin, attribute.valueBegin, valueEnd});
    }
    if (meta.contents.empty())
        return;
    if (const std::size_t valueEnd = meta.contents.back().valueEnd; valueEnd > end) {
        // There was a '>' in the value: attributes go on behind it, to the next one.
        const std::size_t last = std::min(m_endsBehindValues.from(valueEnd), m_html.size());
        std::ranges::copy_if(attributes(valueEnd + 1, last), std::back_inserter(meta.named),
                             [](const Attribute &each) { return each.name != contentName; });
    }
    if (!meta.named.empty())
        m_metas.push_back(std::move(meta));
}

/// Those with a quote, wherever they stand between two places.
std::vector<Metas::Attribute> Metas::attributes(std::size_t begin, std::size_t end) const
{
    const std::string_view tag = m_html.substr(0, end);
    std::vector<Attribute> found;
    for (auto at = tag.find('=', begin); at != npos && at + 1 < tag.size();
         at = tag.find('=', at + 1)) {
        if (!isQuote(tag[at + 1]))
            continue;
        for (const std::string_view name : {contentName, nameName, propertyName}) {
            if (endsWith(tag.substr(begin, at - begin), name))
                found.push_back({name, at - name.size(), at + 2});
        }
    }
    return found;
}

std::size_t Metas::quoteFrom(std::size_t place)
{
    return std::min(m_quotes.from(place), m_apostrophes.from(place));
}

std::optional<std::string_view> Metas::content(std::string_view attribute, std::string_view value,
                                               ContentPlace place) const
{
    for (const Meta &meta : m_metas) {
        std::size_t first = npos;
        std::size_t last = 0;
        std::size_t lastBehindEnd = 0;
        for (const Attribute &named : meta.named) {
            if (named.name != attribute || !hasValue(named, value))
                continue;
            first = std::min(first, named.begin);
            (named.begin < meta.end ? last : lastBehindEnd) = named.begin;
        }
        const auto fits = [&](const Content &each) {
            if (place == ContentPlace::behind)
                return first < each.begin;
            return each.valueEnd < (each.valueEnd < meta.end ? last : lastBehindEnd);
        };
        const auto found = std::find_if(meta.contents.rbegin(), meta.contents.rend(), fits);
        if (found != meta.contents.rend())
            return m_html.substr(found->valueBegin, found->valueEnd - found->valueBegin);
    }
    return std::nullopt;
}

bool Metas::hasValue(const Attribute &attribute, std::string_view value) const
{
    const std::string_view rest = m_html.substr(attribute.valueBegin);
    const std::size_t size = prefixLength(rest, value);
    return size > 0 && size < rest.size() && isQuote(rest[size]);
}

std::optional<Block> firstBlock(std::string_view html, const BlockPattern &pattern,
                                std::size_t from)
{
    const auto block = nextBlock(html, pattern, from);
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
