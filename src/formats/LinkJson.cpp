// SPDX-License-Identifier: MIT
#include "LinkJson.h"

#include "LinkAddress.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace
{

/// ISO 8601 in UTC to the microsecond, of which Qt knows nothing: the part before the point.
constexpr auto wholeSeconds = QLatin1StringView("2026-11-21T08:30:00");
constexpr int digits = 6;

QString isoText(Instant instant)
{
    const auto whole = std::chrono::floor<seconds>(instant);
    const QDateTime date =
        QDateTime::fromMSecsSinceEpoch(milliseconds(whole.time_since_epoch()).count(), Qt::UTC);
    const qint64 fraction = (instant - whole).count();
    return date.toString(u"yyyy-MM-ddTHH:mm:ss") + u".%1Z"_s.arg(fraction, digits, 10, QChar(u'0'));
}

std::optional<Instant> instantFrom(QString text)
{
    microseconds fraction{0};
    const auto point = wholeSeconds.size();
    if (text.size() == point + 1 + digits + 1 && text.at(point) == u'.') {
        fraction = microseconds(text.sliced(point + 1, digits).toUInt());
        text.remove(point, 1 + digits);
    }
    const QDateTime moment = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!moment.isValid())
        return std::nullopt;
    return Instant(milliseconds(moment.toMSecsSinceEpoch())) + fraction;
}

std::optional<QString> textAt(const QJsonObject &object, QLatin1StringView key)
{
    const QJsonValue value = object.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

} // namespace

QByteArray jsonOf(const CapturedLink &link)
{
    QJsonObject object{
        {u"id"_s, link.id.toString(QUuid::WithoutBraces)},
        {u"url"_s, link.url},
        {u"copiedAt"_s, isoText(link.copiedAt)},
        {u"isExported"_s, link.isExported},
        {u"isVisible"_s, link.isVisible},
    };
    if (link.title)
        object.insert(u"title"_s, *link.title);
    if (link.summary)
        object.insert(u"summary"_s, *link.summary);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<CapturedLink> linkFrom(const QJsonObject &object, Instant now)
{
    const auto url = textAt(object, "url"_L1);
    if (!url)
        return std::nullopt;
    CapturedLink link;
    link.id = QUuid(object.value("id"_L1).toString());
    link.url = *url;
    if (link.id.isNull()) { // from elsewhere, so the address is not yet as it is stored
        const auto address = webAddressIn(*url);
        if (!address)
            return std::nullopt;
        link.id = QUuid::createUuid();
        link.url = normalizedUrl(*address);
    }
    link.title = textAt(object, "title"_L1);
    link.summary = textAt(object, "summary"_L1);
    link.copiedAt = instantFrom(object.value("copiedAt"_L1).toString()).value_or(now);
    link.isExported = object.value("isExported"_L1).toBool(false);
    link.isVisible = object.value("isVisible"_L1).toBool(true);
    return link;
}
