// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace re2
{
class RE2;
}

/// A regular expression over UTF-8 text that takes linear time, ignoring case. In RE2's syntax,
/// where
/// `\s` and `\d` know ASCII only: write `[\t-\r\x{85}\p{Z}]` and `\p{Nd}`. Any thread.
class Pattern
{
public:
    /// `expression` is a literal of ours: one that does not compile ends the program.
    explicit Pattern(std::string_view expression);
    Pattern(Pattern &&) noexcept;
    ~Pattern();

    /// Group 1 of the first match, a part of `text`; the whole match where there is no group.
    std::optional<std::string_view> firstCapture(std::string_view text) const;
    /// The same of the first `limit` matches, which do not overlap.
    std::vector<std::string_view> captures(std::string_view text, std::size_t limit) const;

private:
    std::unique_ptr<const re2::RE2> m_expression;
};
