// SPDX-License-Identifier: MIT
#include "Prices.h"

#include "WhiteSpace.h"

#include <algorithm>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace
{

constexpr std::size_t npos = std::string_view::npos;

struct Currency {
    std::string_view sign;
    std::size_t next = 0; ///< where the sign stands next
};

/// Behind the decimal digit at `at`, of whatever script; `at` when there is none.
std::size_t digitEnd(std::string_view text, std::size_t at)
{
    if (at == text.size())
        return at;
    std::size_t next = at;
    UChar32 character = 0;
    U8_NEXT(text.data(), next, text.size(), character);
    return u_isdigit(character) ? next : at;
}

/// The same for a digit or a comma.
std::size_t figureEnd(std::string_view text, std::size_t at)
{
    return text.substr(at).starts_with(',') ? at + 1 : digitEnd(text, at);
}

/// Behind the amount at `begin`; `begin` when there is none.
std::size_t amountEnd(std::string_view text, std::size_t begin)
{
    std::size_t end = begin;
    for (auto next = figureEnd(text, end); next > end; next = figureEnd(text, end))
        end = next;
    if (end == begin || !text.substr(end).starts_with('.'))
        return end;
    const std::size_t first = digitEnd(text, end + 1);
    const std::size_t second = digitEnd(text, first);
    return first > end + 1 && second > first ? second : end;
}

} // namespace

std::vector<std::string_view> prices(std::string_view html, std::size_t limit)
{
    std::vector<std::string_view> found;
    Currency currencies[] = {{"$"}, {"£"}, {"€"}};
    std::size_t from = 0;
    while (found.size() < limit) {
        for (auto &[sign, next] : currencies) {
            if (next <= from)
                next = html.find(sign, from);
        }
        const auto &[sign, at] = *std::ranges::min_element(currencies, {}, &Currency::next);
        if (at == npos)
            break;
        const std::size_t begin = skipSpace(html, at + sign.size());
        const std::size_t end = amountEnd(html, begin);
        if (end > begin)
            found.push_back(html.substr(at, end - at));
        from = end > begin ? end : at + sign.size();
    }
    return found;
}
