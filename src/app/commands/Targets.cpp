// SPDX-License-Identifier: MIT
#include "commands/Targets.h"

#include "LinkAddress.h"
#include "ModelContainer.h"
#include "StoreReader.h"
#include "commands/Terminal.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

using Found = Expected<QList<CapturedLink>, StoreError>;

constexpr qsizetype fewestDigits = 4;
constexpr qsizetype allDigits = 32;
constexpr int candidateLimit = 20;

/// Absent when `target` is no beginning of an id.
std::optional<QString> idDigits(const QString &target)
{
    const QString digits = QString(target).remove(u'-');
    const bool isHexadecimal = std::all_of(digits.begin(), digits.end(), [](QChar digit) {
        return u"0123456789abcdefABCDEF"_s.contains(digit);
    });
    const bool isId = isHexadecimal && digits.size() >= fewestDigits && digits.size() <= allDigits;
    return isId ? std::optional(digits) : std::nullopt;
}

Found find(const QString &target)
{
    const QString folder = ModelContainer::defaultFolder();
    if (const auto digits = idDigits(target))
        return readLinksWithId(folder, *digits, candidateLimit);
    auto links = readLinksWithUrl(folder, target);
    const bool isElsewhere = links && links->isEmpty();
    return isElsewhere ? readLinksWithUrl(folder, normalizedUrl(target)) : links;
}

QStringList candidates(const QList<CapturedLink> &links)
{
    QStringList lines;
    for (const CapturedLink &link : links)
        lines.append(link.id.toString(QUuid::WithoutBraces) + u"  " + link.url);
    return lines;
}

} // namespace

Expected<QList<CapturedLink>, CommandError> linksNamed(const QString &target)
{
    const Found links = find(target);
    if (!links)
        return Unexpected{CommandError{ExitCode::unusable, description(links.error())}};
    if (links->isEmpty())
        return Unexpected{CommandError{ExitCode::nothing, target + u": no such link"}};
    if (links->size() > 1 && idDigits(target))
        return Unexpected{CommandError{ExitCode::nothing,
                                       target + u": the ids of several links begin with this:",
                                       candidates(*links)}};
    return *links;
}
