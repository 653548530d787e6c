// SPDX-License-Identifier: MIT
#include "PageText.h"

#include <QUtf8StringView>

namespace
{

constexpr bool isContinuation(char byte)
{
    return (byte & 0xC0) == 0x80;
}

constexpr qsizetype sequenceLength(char lead)
{
    const auto byte = static_cast<unsigned char>(lead);
    return byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

/// Only the last three bytes can be the beginning of a longer sequence.
QByteArrayView withoutCutCharacter(QByteArrayView body)
{
    qsizetype lead = body.size() - 1;
    while (lead > 0 && lead > body.size() - 4 && isContinuation(body[lead]))
        --lead;
    const bool isCut = lead >= 0 && sequenceLength(body[lead]) > body.size() - lead;
    return isCut ? body.first(lead) : body;
}

std::string fromLatin1(QByteArrayView body)
{
    std::string text;
    text.reserve(body.size() + body.size() / 8);
    for (const char character : body) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            text += character;
        } else {
            text += static_cast<char>(0xC0 | code >> 6);
            text += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return text;
}

} // namespace

std::string decodePage(QByteArrayView body, BodyEnd end)
{
    if (end == BodyEnd::truncated)
        body = withoutCutCharacter(body);
    if (!QUtf8StringView(body.data(), body.size()).isValidUtf8())
        return fromLatin1(body);
    constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
    if (body.startsWith(byteOrderMark))
        body = body.sliced(byteOrderMark.size());
    return {body.data(), static_cast<std::size_t>(body.size())};
}
