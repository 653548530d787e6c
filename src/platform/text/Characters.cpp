// SPDX-License-Identifier: MIT
#include "Characters.h"

#include <algorithm>
#include <memory>
#include <unicode/brkiter.h>
#include <unicode/utext.h>

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

/// The index behind `count` clusters; `size` when there are fewer.
std::size_t clusterEnd(UText &text, std::size_t size, std::size_t count)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::BreakIterator &iterator = clusterIterator();
    iterator.setText(&text, status);
    int32_t end = iterator.first();
    while (count-- > 0 && end != icu::BreakIterator::DONE)
        end = iterator.next();
    utext_close(&text);
    return end == icu::BreakIterator::DONE ? size : static_cast<std::size_t>(end);
}

/// In ASCII without carriage returns every unit is a character. The unit behind the first `count`
/// counts too: it may belong to the last of them.
template <typename View>
bool isPlain(View text, std::size_t count)
{
    const auto plain = [](auto unit) { return unit > 0 && unit < 0x80 && unit != '\r'; };
    const auto end = text.begin() + std::min<std::size_t>(text.size(), count + 1);
    return std::all_of(text.begin(), end, plain);
}

} // namespace

std::string_view firstCharacters(std::string_view utf8, std::size_t count)
{
    if (isPlain(utf8, count))
        return utf8.substr(0, count);
    UErrorCode status = U_ZERO_ERROR;
    UText text = UTEXT_INITIALIZER;
    utext_openUTF8(&text, utf8.data(), static_cast<int64_t>(utf8.size()), &status);
    return utf8.substr(0, clusterEnd(text, utf8.size(), count));
}

QStringView firstCharacters(QStringView text, std::size_t count)
{
    const std::u16string_view units(text.utf16(), text.size());
    if (isPlain(units, count))
        return units.substr(0, count);
    UErrorCode status = U_ZERO_ERROR;
    UText opened = UTEXT_INITIALIZER;
    utext_openUChars(&opened, units.data(), text.size(), &status);
    return units.substr(0, clusterEnd(opened, units.size(), count));
}
