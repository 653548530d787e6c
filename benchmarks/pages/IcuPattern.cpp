// SPDX-License-Identifier: MIT
#include "IcuPattern.h"

namespace
{

void demand(UErrorCode status)
{
    if (U_FAILURE(status))
        qFatal("ICU's regular expressions: %s", u_errorName(status));
}

/// Shares the characters with `text`.
icu::UnicodeString view(const QString &text)
{
    const QStringView units = text;
    return {false, units.utf16(), static_cast<int32_t>(units.size())};
}

QString toQString(const icu::UnicodeString &text)
{
    return QStringView(text.getBuffer(), text.length()).toString(); // with a U+FEFF in front
}

} // namespace

IcuPattern::IcuPattern(const QString &expression)
{
    UErrorCode status = U_ZERO_ERROR;
    m_pattern.reset(icu::RegexPattern::compile(view(expression), UREGEX_CASE_INSENSITIVE, status));
    demand(status);
}

QStringList IcuPattern::captures(const QString &text, int limit) const
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString input = view(text);
    const std::unique_ptr<icu::RegexMatcher> matcher(m_pattern->matcher(input, status));
    QStringList found;
    while (found.size() < limit && matcher->find(status)) {
        const auto group = matcher->group(std::min(matcher->groupCount(), 1), status);
        found.append(toQString(group));
    }
    demand(status);
    return found;
}

QString IcuPattern::blanked(const QString &text) const
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString input = view(text);
    const std::unique_ptr<icu::RegexMatcher> matcher(m_pattern->matcher(input, status));
    const icu::UnicodeString blanked = matcher->replaceAll(icu::UnicodeString(u' '), status);
    demand(status);
    return toQString(blanked);
}
