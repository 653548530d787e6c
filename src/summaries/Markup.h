// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

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

/// The first block, as a regular expression finds it: `start[^>]*>[\s\S]*?end`.
std::optional<Block> firstBlock(std::string_view html, const BlockPattern &pattern);

/// `part` with a space in place of each block. A part that is not whole ends before the block that
/// has no end in it; a start that is cut in two is left to `withoutTags`.
PagePart withoutBlocks(PagePart part, const BlockPattern &pattern);
/// The same for tags: `<[^>]+>`. A part that is not whole ends before one that is cut in two.
PagePart withoutTags(PagePart part);

/// The parts of a page that a pattern `<meta[^>]*content=["']([^"']+)["'][^>]*` can match, in
/// order: searching them finds what searching the page would.
std::string metaParts(std::string_view html);
