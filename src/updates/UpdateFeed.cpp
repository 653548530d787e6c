// SPDX-License-Identifier: MIT
#include "UpdateFeed.h"

#include "Calendar.h"
#include "Utf8.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

using namespace Qt::StringLiterals;
using Kind = UpdateError::Kind;

namespace
{

std::optional<UpdateError> signatureFault(SignatureCheck check)
{
    switch (check) {
    case SignatureCheck::valid:
        return std::nullopt;
    case SignatureCheck::unreadable:
        return UpdateError{Kind::notSigned};
    case SignatureCheck::unknownKey:
        return UpdateError{Kind::unknownKey};
    case SignatureCheck::wrong:
        return UpdateError{Kind::wrongSignature};
    }
    Q_UNREACHABLE();
}

std::optional<qint64> wholeNumber(const QJsonValue &value)
{
    const qint64 number = value.toInteger(-1);
    return number < 0 ? std::nullopt : std::optional(number);
}

std::optional<Instant> instant(const QJsonValue &value)
{
    const QDateTime date = QDateTime::fromString(value.toString(), Qt::ISODate);
    if (!date.isValid() || date.timeSpec() == Qt::LocalTime) // which is another one everywhere
        return std::nullopt;
    return instantOf(date);
}

std::optional<QVersionNumber> versionNumber(const QJsonValue &value)
{
    const QString text = value.toString();
    qsizetype end = 0;
    const QVersionNumber version = QVersionNumber::fromString(text, &end);
    if (version.isNull() || end != text.size())
        return std::nullopt;
    return version;
}

std::optional<QString> securePage(const QJsonValue &value)
{
    const QUrl url(value.toString(), QUrl::StrictMode);
    const bool isPage = url.isValid() && url.scheme() == u"https" && !url.host().isEmpty()
        && url.userInfo().isEmpty();
    return isPage ? std::optional(QString::fromLatin1(url.toEncoded())) : std::nullopt;
}

Unexpected<UpdateError> incomplete(const char *field)
{
    return Unexpected{UpdateError{Kind::incomplete, QString::fromLatin1(field)}};
}

Expected<UpdateFeed, UpdateError> parseFeed(const QByteArray &document)
{
    const QJsonDocument json = readJson(document);
    if (!json.isObject())
        return Unexpected{UpdateError{Kind::notJson}};
    const QJsonObject object = json.object();
    const auto sequence = wholeNumber(object.value("sequence"_L1));
    if (!sequence)
        return incomplete("sequence");
    const auto expires = instant(object.value("expires"_L1));
    if (!expires)
        return incomplete("expires");
    const auto version = versionNumber(object.value("version"_L1));
    if (!version)
        return incomplete("version");
    const auto releasePage = securePage(object.value("releasePage"_L1));
    if (!releasePage)
        return incomplete("releasePage");
    return UpdateFeed{*sequence, *expires, *version, *releasePage,
                      object.value("notes"_L1).toString()};
}

} // namespace

QString description(const UpdateError &error)
{
    switch (error.kind) {
    case Kind::notConfigured:
        return UpdateError::tr("The update feed of this installation is not set up correctly.");
    case Kind::unreachable:
        return UpdateError::tr("The update feed could not be reached: %1").arg(error.detail);
    case Kind::missing:
        return UpdateError::tr("There is no update feed at its address.");
    case Kind::refused:
        return UpdateError::tr("The update feed leads to an address that is not secure.");
    case Kind::oversized:
        return UpdateError::tr("The update feed is too large.");
    case Kind::notSigned:
        return UpdateError::tr("The update feed is not signed.");
    case Kind::unknownKey:
        return UpdateError::tr("The update feed is signed with an unknown key.");
    case Kind::wrongSignature:
        return UpdateError::tr("The signature of the update feed is wrong.");
    case Kind::notJson:
        return UpdateError::tr("The update feed cannot be read.");
    case Kind::incomplete:
        return UpdateError::tr("The update feed has no valid “%1”.").arg(error.detail);
    case Kind::expired:
        return UpdateError::tr("The update feed has expired.");
    case Kind::replayed:
        return UpdateError::tr("The update feed is older than one seen before.");
    }
    Q_UNREACHABLE();
}

Expected<UpdateFeed, UpdateError> readFeed(const QByteArray &document, const QByteArray &signature,
                                           const FeedTerms &terms)
{
    if (const auto fault = signatureFault(checkMinisign(document, signature, terms.keys)))
        return Unexpected{*fault};
    auto feed = parseFeed(document);
    if (!feed)
        return feed;
    if (feed->expires <= terms.now)
        return Unexpected{UpdateError{Kind::expired}};
    if (feed->sequence < terms.highestSequence)
        return Unexpected{UpdateError{Kind::replayed}};
    return feed;
}
