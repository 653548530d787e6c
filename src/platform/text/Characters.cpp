// SPDX-License-Identifier: MIT
#include "Characters.h"

#include <memory>
#include <optional>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace
{

/// One per thread: making one costs far more than using it.
icu::BreakIterator &clusterIterator()
{
    thread_local const std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        auto *made = icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status);
        if (U_FAILURE(status))
            qFatal("ICU cannot tell characters apart: %s", u_errorName(status));
        return std::unique_ptr<icu::BreakIterator>(made);
    }();
    return *iterator;
}

/// Has the thread's iterator read a text for as long as it lives.
class OpenText
{
public:
    explicit OpenText(std::string_view utf8)
    {
        utext_openUTF8(&m_text, utf8.data(), static_cast<int64_t>(utf8.size()), &m_status);
        m_iterator.setText(&m_text, m_status);
    }
    explicit OpenText(std::u16string_view units)
    {
        utext_openUChars(&m_text, units.data(), static_cast<int64_t>(units.size()), &m_status);
        m_iterator.setText(&m_text, m_status);
    }
    OpenText(const OpenText &) = delete;
    OpenText &operator=(const OpenText &) = delete;
    ~OpenText() { utext_close(&m_text); }

    std::size_t clusterEnd(std::size_t begin)
    {
        return static_cast<std::size_t>(m_iterator.following(static_cast<int32_t>(begin)));
    }

private:
    icu::BreakIterator &m_iterator = clusterIterator();
    UErrorCode m_status = U_ZERO_ERROR;
    UText m_text = UTEXT_INITIALIZER;
};

UChar32 next(std::string_view utf8, std::size_t &at)
{
    UChar32 character;
    U8_NEXT(utf8.data(), at, utf8.size(), character);
    return character;
}

UChar32 next(std::u16string_view units, std::size_t &at)
{
    UChar32 character;
    U16_NEXT(units.data(), at, units.size(), character);
    return character;
}

constexpr bool isPrintableAscii(UChar32 unit)
{
    return unit >= ' ' && unit < 0x7F;
}

/// Whether clusters begin and end between the character at `at`, which is passed, and its like.
template <typename View>
bool isPlain(View text, std::size_t &at)
{
    const UChar32 character = next(text, at);
    if (character < 0x80)
        return isPrintableAscii(character);
    return u_getIntPropertyValue(character, UCHAR_GRAPHEME_CLUSTER_BREAK) == U_GCB_OTHER;
}

/// ICU takes its time, so it is asked only about what is not plain, or stands in front of that.
template <typename View>
std::size_t clustersEnd(View text, std::size_t count)
{
    std::optional<OpenText> opened;
    std::size_t at = 0;
    while (count-- > 0 && at < text.size()) {
        if (at + 1 < text.size() && isPrintableAscii(text[at]) && isPrintableAscii(text[at + 1])) {
            ++at; // as most are
            continue;
        }
        std::size_t end = at;
        const bool isPlainHere = isPlain(text, end);
        std::size_t behind = end;
        if (isPlainHere && (end == text.size() || isPlain(text, behind))) {
            at = end;
            continue;
        }
        if (!opened)
            opened.emplace(text);
        at = opened->clusterEnd(at);
    }
    return at;
}

} // namespace

std::string_view firstCharacters(std::string_view utf8, std::size_t count)
{
    return utf8.substr(0, clustersEnd(utf8, count));
}

QStringView firstCharacters(QStringView text, std::size_t count)
{
    const std::u16string_view units(text.utf16(), text.size());
    return units.substr(0, clustersEnd(units, count));
}
