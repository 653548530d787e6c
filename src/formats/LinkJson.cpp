// SPDX-License-Identifier: MIT
#include "LinkJson.h"

#include "LinkAddress.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace
{

/// ISO 8601 in UTC to the microsecond, of which Qt knows nothing: the part before the point.
constexpr auto wholeSeconds = QLatin1StringView("2026-11-21T08:30:00");
constexpr int digits = 6;

QByteArray isoText(Instant instant)
{
    const auto whole = std::chrono::floor<seconds>(instant);
    const time_t sinceEpoch = whole.time_since_epoch().count();
    tm date = {};
    gmtime_r(&sinceEpoch, &date);
    std::array<char, 64> text = {};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%0*dZ",
                  date.tm_year + 1900, date.tm_mon + 1, date.tm_mday, date.tm_hour, date.tm_min,
                  date.tm_sec, digits, int((instant - whole).count()));
    return text.data();
}

bool isEscaped(QChar character)
{
    return character < u' ' || character == u'"' || character == u'\\' || character.isSurrogate();
}

/// `text` as QJsonDocument writes it, which is asked only where it may do more than copy.
QByteArray jsonString(const QString &text)
{
    if (std::none_of(text.begin(), text.end(), isEscaped))
        return '"' + text.toUtf8() + '"';
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.sliced(1, array.size() - 2);
}

QByteArray jsonField(const char *name, const std::optional<QString> &text)
{
    return text ? name + jsonString(*text) : QByteArray();
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
    const auto text = [](bool value) { return value ? "true" : "false"; };
    return R"({"copiedAt":")" + isoText(link.copiedAt) + R"(","id":")"
        + link.id.toByteArray(QUuid::WithoutBraces) + R"(","isExported":)" + text(link.isExported)
        + R"(,"isVisible":)" + text(link.isVisible) + jsonField(R"(,"summary":)", link.summary)
        + jsonField(R"(,"title":)", link.title) + R"(,"url":)" + jsonString(link.url) + '}';
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
