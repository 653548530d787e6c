// SPDX-License-Identifier: MIT
#include "WhiteSpace.h"

#include <array>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace
{

constexpr std::array<bool, 128> asciiSpaces = [] {
    std::array<bool, 128> spaces{};
    for (const char space : {' ', '\t', '\n', '\v', '\f', '\r'})
        spaces[space] = true;
    return spaces;
}();

bool isSpace(UChar32 character)
{
    return character >= 0
        && (character < 128 ? asciiSpaces[character] : u_isUWhiteSpace(character));
}

/// The index of the first character at or behind `begin` that is white space, or is none.
std::size_t findSpace(std::string_view text, std::size_t begin, bool wanted)
{
    while (begin < text.size()) {
        const auto byte = static_cast<unsigned char>(text[begin]);
        if (byte < 128) {
            if (asciiSpaces[byte] == wanted)
                break;
            ++begin;
            continue;
        }
        std::size_t next = begin;
        UChar32 character;
        U8_NEXT(text.data(), next, text.size(), character);
        if (isSpace(character) == wanted)
            break;
        begin = next;
    }
    return begin;
}

} // namespace

std::size_t skipSpace(std::string_view text, std::size_t begin)
{
    return findSpace(text, begin, false);
}

std::string_view trimmed(std::string_view text)
{
    text.remove_prefix(findSpace(text, 0, false));
    while (!text.empty()) {
        auto last = static_cast<int32_t>(text.size());
        UChar32 character;
        U8_PREV(text.data(), 0, last, character);
        if (!isSpace(character))
            break;
        text.remove_suffix(text.size() - last);
    }
    return text;
}

std::string simplified(std::string_view text)
{
    std::string words;
    words.reserve(text.size());
    std::size_t begin = findSpace(text, 0, false);
    while (begin < text.size()) {
        const std::size_t end = findSpace(text, begin, true);
        if (!words.empty())
            words += ' ';
        words.append(text, begin, end - begin);
        begin = findSpace(text, end, false);
    }
    return words;
}
