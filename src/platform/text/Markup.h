// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What regular expressions that ignore case would find in a page, in a time that grows with its
// size and no faster. Pages are valid UTF-8.

/// Asked from places that only ever move on, it reads a text once.
class NextOf
{
public:
    NextOf(std::string_view text, char sought)
        : m_text(text)
        , m_sought(sought)
    {
    }

    /// Where the character stands at or behind `place`, which is not 0; npos when it does not.
    std::size_t from(std::size_t place)
    {
        if (m_at < place)
            m_at = m_text.find(m_sought, place);
        return m_at;
    }

private:
    std::string_view m_text;
    char m_sought;
    std::size_t m_at = 0;
};

/// `<name`: where it stands, which may be the beginning of a longer name.
struct TagStart {
    std::size_t at;
    std::string_view name;

    std::size_t end() const { return at + 1 + name.size(); }
};

/// Finds tags one after the other.
class TagScanner
{
public:
    /// `names` are lower case, without the s that folding makes of other letters; none begins
    /// another.
    TagScanner(std::string_view html, std::initializer_list<std::string_view> names);

    std::optional<TagStart> next();

private:
    std::string_view m_html;
    std::vector<std::string_view> m_names;
    std::array<bool, 32> m_isInitial{}; ///< by the last five bits of a letter
    std::size_t m_from = 0;
};

/// `<name[^>]*>([^<]+)</name>`: the texts of the elements of one name, or of several.
class ElementTexts
{
public:
    ElementTexts(std::string_view html, std::initializer_list<std::string_view> names,
                 std::size_t limit);

    /// To be called with every tag of the names, in their order.
    void take(const TagStart &tag);
    /// At most as many as the limit.
    const std::vector<std::string_view> &found() const { return m_found; }
    bool isFull() const { return m_found.size() == m_limit; }

private:
    std::string_view m_html;
    std::vector<std::string_view> m_names;
    std::size_t m_limit;
    NextOf m_tagEnds{m_html, '>'};
    NextOf m_textEnds{m_html, '<'};
    std::size_t m_end = 0; ///< of the last match
    std::vector<std::string_view> m_found;
};

/// Where a meta element has its content: in front of the attribute that says what it is, or behind.
enum class ContentPlace { behind, inFront };

/// What meta elements say.
class Metas
{
public:
    explicit Metas(std::string_view html)
        : m_html(html)
    {
    }

    /// To be called with every tag of the name "meta", in their order.
    void take(const TagStart &tag);
    /// Group 1 of `<meta[^>]*attribute=["']value["'][^>]*content=["']([^"']+)["']`, or with the
    /// content in front `<meta[^>]*content=["']([^"']+)["'][^>]*attribute=["']value["']`, where
    /// the attribute is "name" or "property".
    std::optional<std::string_view> content(std::string_view attribute, std::string_view value,
                                            ContentPlace place) const;

private:
    struct Attribute {
        std::string_view name;
        std::size_t begin;
        std::size_t valueBegin;
    };
    struct Content {
        std::size_t begin;
        std::size_t valueBegin;
        std::size_t valueEnd;
    };
    struct Meta {
        std::size_t end; ///< of the tag, as far as `[^>]*` reaches
        std::vector<Attribute>
            named; ///< also those behind a last content that reaches behind `end`
        std::vector<Content> contents; ///< the empty ones left out
    };

    std::vector<Attribute> attributes(std::size_t begin, std::size_t end) const;
    std::size_t quoteFrom(std::size_t place);
    bool hasValue(const Attribute &attribute, std::string_view value) const;

    std::string_view m_html;
    NextOf m_ends{m_html, '>'};
    NextOf m_endsBehindValues{m_html, '>'};
    NextOf m_quotes{m_html, '"'};
    NextOf m_apostrophes{m_html, '\''};
    std::size_t m_lastEnd = 0;
    std::vector<Meta> m_metas; ///< that have both
};

/// A part of a page that begins with `start` and ends with the next `end`, in whatever case. Of a
/// tag `start` is the beginning: what follows up to the first `>` belongs to it.
struct BlockPattern {
    enum class Start { tag, text };

    std::string_view start; ///< lower case, `<` first
    Start kind;
    std::string_view end; ///< lower case
};

/// Where a block stands, as indices.
struct Block {
    std::size_t begin;
    std::size_t innerBegin;
    std::size_t innerEnd;
    std::size_t end;
};

/// A page, or as much of its beginning as is looked at.
struct PagePart {
    std::string text; ///< UTF-8
    bool isWhole;
};

/// The first block at or behind `from`, as a regular expression finds it: `start[^>]*>[\s\S]*?end`.
std::optional<Block> firstBlock(std::string_view html, const BlockPattern &pattern,
                                std::size_t from = 0);

/// `part` with a space in place of each block. A part that is not whole ends before the block that
/// has no end in it; a start that is cut in two is left to `withoutTags`.
PagePart withoutBlocks(PagePart part, const BlockPattern &pattern);
/// The same for tags: `<[^>]+>`. A part that is not whole ends before one that is cut in two.
PagePart withoutTags(PagePart part);
