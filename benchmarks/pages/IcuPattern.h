// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

#include <memory>
#include <unicode/regex.h>

/// A regular expression that ignores case as ICU does: what our own matching must agree with. Its
/// time is not linear, so it is for small pages.
class IcuPattern
{
public:
    explicit IcuPattern(const QString &expression);

    /// Group 1 of the first `limit` matches; the whole matches where there is no group.
    QStringList captures(const QString &text, int limit) const;
    /// `text` with a space in place of each match.
    QString blanked(const QString &text) const;

private:
    std::unique_ptr<icu::RegexPattern> m_pattern;
};
