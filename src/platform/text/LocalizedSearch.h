// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

#include <string>
#include <string_view>

/// Finds texts in texts the way readers of one locale expect it: case and the way in which accents
/// are encoded make no difference. Both sides are folded, so keep what is searched more than once.
/// Any thread.
class LocalizedSearch
{
public:
    /// `locale` as `systemLocale()` gives it. In Turkish and Azerbaijani I and i are two letters.
    explicit LocalizedSearch(const QString &locale);

    /// `text` as folded UTF-8.
    std::string folded(QStringView text) const;

private:
    unsigned m_caseOptions;
};

/// Both are folded; every text contains the empty one.
bool containsFolded(std::string_view text, std::string_view sought);
