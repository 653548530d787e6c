// SPDX-License-Identifier: MIT
#include "ReferenceTitle.h"

#include "IcuPattern.h"

using namespace Qt::StringLiterals;

QString referenceTitle(const QString &html)
{
    static const IcuPattern patterns[] = {
        IcuPattern(uR"(<title[^>]*>([^<]+)</title>)"_s),
        IcuPattern(uR"(<meta[^>]*property=["']og:title["'][^>]*content=["']([^"']+)["'])"_s),
        IcuPattern(uR"(<meta[^>]*content=["']([^"']+)["'][^>]*property=["']og:title["'])"_s),
    };
    for (const IcuPattern &pattern : patterns) {
        QString title = pattern.captures(html, 1).value(0).trimmed();
        title.replace("&amp;"_L1, "&"_L1).replace("&lt;"_L1, "<"_L1).replace("&gt;"_L1, ">"_L1);
        title.replace("&quot;"_L1, "\""_L1)
            .replace("&#39;"_L1, "'"_L1)
            .replace("&nbsp;"_L1, " "_L1);
        if (!title.isEmpty())
            return title;
    }
    return QString();
}
