// SPDX-License-Identifier: MIT
#include "EvidencePacket.h"

#include "Utf8.h"
#include "WebAddress.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

using Seconds = std::chrono::duration<double>;

/// The one list of the fields and their keys, in order.
template <typename Packet, typename Visitor>
void visitFields(Packet &packet, Visitor &visit)
{
    visit("url"_L1, packet.url);
    visit("domain"_L1, packet.domain);
    visit("fetchedAt"_L1, packet.fetchedAt);
    visit("title"_L1, packet.title);
    visit("metaDescription"_L1, packet.metaDescription);
    visit("siteName"_L1, packet.siteName);
    visit("pageType"_L1, packet.pageType);
    visit("ogTitle"_L1, packet.ogTitle);
    visit("ogDescription"_L1, packet.ogDescription);
    visit("ogType"_L1, packet.ogType);
    visit("headings"_L1, packet.headings);
    visit("navLabels"_L1, packet.navLabels);
    visit("ctaButtons"_L1, packet.ctaButtons);
    visit("pricingText"_L1, packet.pricingText);
    visit("extractedText"_L1, packet.extractedText);
}

/// QJsonObject would sort the keys.
class JsonWriter
{
public:
    void operator()(QLatin1StringView key, const QString &text) { add(key, text); }
    void operator()(QLatin1StringView key, const std::optional<QString> &text)
    {
        if (text)
            add(key, *text);
    }
    void operator()(QLatin1StringView key, const QStringList &texts)
    {
        add(key, QJsonArray::fromStringList(texts));
    }
    void operator()(QLatin1StringView key, Instant time)
    {
        add(key, Seconds(time.time_since_epoch()).count());
    }
    QByteArray json() const { return '{' + m_members + '}'; }

private:
    void add(QLatin1StringView key, const QJsonValue &value)
    {
        if (!m_members.isEmpty())
            m_members += ',';
        QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
        list.replace("\xEF\xBB\xBF", "\\ufeff"); // which the parser drops from a text's beginning
        m_members +=
            '"' + QByteArray(key.data(), key.size()) + "\":" + list.mid(1, list.size() - 2);
    }

    QByteArray m_members;
};

class JsonReader
{
public:
    explicit JsonReader(const QJsonObject &object)
        : m_object(object)
    {
    }
    bool isComplete() const { return m_isComplete; }

    void operator()(QLatin1StringView key, QString &text)
    {
        demand(m_object.value(key).isString());
        text = m_object.value(key).toString();
    }
    void operator()(QLatin1StringView key, std::optional<QString> &text)
    {
        const QJsonValue value = m_object.value(key);
        if (value.isUndefined() || value.isNull())
            return;
        demand(value.isString());
        text = value.toString();
    }
    void operator()(QLatin1StringView key, QStringList &texts)
    {
        const QJsonValue value = m_object.value(key);
        demand(value.isArray());
        for (const auto &text : value.toArray()) {
            demand(text.isString());
            texts.append(text.toString());
        }
    }
    void operator()(QLatin1StringView key, Instant &time)
    {
        const QJsonValue value = m_object.value(key);
        const double microseconds = value.toDouble() * 1e6;
        demand(value.isDouble() && std::abs(microseconds) < 9e18); // what an Instant can hold
        if (m_isComplete)
            time = Instant(std::chrono::microseconds(std::llround(microseconds)));
    }

private:
    void demand(bool condition) { m_isComplete = m_isComplete && condition; }

    const QJsonObject m_object;
    bool m_isComplete = true;
};

} // namespace

EvidencePacket::EvidencePacket(const QString &url, Instant now)
    : url(url)
    , domain(hostOf(url))
    , fetchedAt(now)
{
}

QByteArray EvidencePacket::toJson() const
{
    JsonWriter writer;
    visitFields(*this, writer);
    return writer.json();
}

std::optional<EvidencePacket> EvidencePacket::fromJson(const QByteArray &json)
{
    JsonReader reader(readJson(json).object());
    EvidencePacket packet{QString(), Instant()};
    visitFields(packet, reader);
    return reader.isComplete() ? std::optional(packet) : std::nullopt;
}
