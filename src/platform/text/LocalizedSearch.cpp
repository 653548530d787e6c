// SPDX-License-Identifier: MIT
#include "LocalizedSearch.h"

#include <QString>

#include <algorithm>
#include <cstring>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

using namespace Qt::StringLiterals;

namespace
{

unsigned caseOptions(const QString &locale)
{
    const QString language = locale.section(u'_', 0, 0);
    const bool hasDotlessI = language == u"tr" || language == u"az";
    return hasDotlessI ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
}

bool isAscii(QStringView text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar character) { return character.unicode() < 0x80; });
}

std::string lowerAscii(QStringView text)
{
    std::string lower(text.size(), '\0');
    std::transform(text.begin(), text.end(), lower.begin(), [](QChar character) {
        const char unit = character.toLatin1();
        return unit >= 'A' && unit <= 'Z' ? char(unit - 'A' + 'a') : unit;
    });
    return lower;
}

const icu::Normalizer2 &composition()
{
    UErrorCode status = U_ZERO_ERROR;
    const auto *const normalizer = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status))
        qFatal("ICU cannot compose characters: %s", u_errorName(status));
    return *normalizer;
}

icu::UnicodeString composed(const icu::UnicodeString &text)
{
    UErrorCode status = U_ZERO_ERROR; // fails for want of memory only
    return composition().normalize(text, status);
}

} // namespace

LocalizedSearch::LocalizedSearch(const QString &locale)
    : m_caseOptions(caseOptions(locale))
{
}

std::string LocalizedSearch::folded(QStringView text) const
{
    if (m_caseOptions == U_FOLD_CASE_DEFAULT && isAscii(text))
        return lowerAscii(text);
    icu::UnicodeString units = composed({false, text.utf16(), int32_t(text.size())});
    units.foldCase(m_caseOptions); // may take composed characters apart
    std::string utf8;
    return composed(units).toUTF8String(utf8);
}

bool containsFolded(std::string_view text, std::string_view sought)
{
    return memmem(text.data(), text.size(), sought.data(), sought.size()) != nullptr;
}
