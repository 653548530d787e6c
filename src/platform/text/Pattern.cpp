// SPDX-License-Identifier: MIT
#include "Pattern.h"

#include <QtGlobal>

#include <re2/re2.h>

namespace
{

std::unique_ptr<const RE2> compile(std::string_view expression)
{
    RE2::Options options;
    options.set_case_sensitive(false);
    options.set_log_errors(false); // running out of memory on a page is no news
    options.set_max_mem(64 << 20);
    return std::make_unique<RE2>(re2::StringPiece(expression.data(), expression.size()), options);
}

} // namespace

Pattern::Pattern(std::string_view expression)
    : m_expression(compile(expression))
{
    if (!m_expression->ok())
        qFatal("Bad pattern: %s", m_expression->error().c_str());
}

Pattern::Pattern(Pattern &&) noexcept = default;
Pattern::~Pattern() = default;

std::optional<std::string_view> Pattern::firstCapture(std::string_view text) const
{
    const auto first = captures(text, 1);
    return first.empty() ? std::nullopt : std::optional(first.front());
}

std::vector<std::string_view> Pattern::captures(std::string_view text, std::size_t limit) const
{
    std::vector<std::string_view> found;
    const re2::StringPiece piece(text.data(), text.size());
    const int group = std::min(m_expression->NumberOfCapturingGroups(), 1);
    std::size_t from = 0;
    re2::StringPiece match[2];
    while (found.size() < limit
           && m_expression->Match(piece, from, text.size(), RE2::UNANCHORED, match, group + 1)) {
        found.emplace_back(match[group].data(), match[group].size());
        from = match[0].data() + match[0].size() - text.data();
    }
    return found;
}
