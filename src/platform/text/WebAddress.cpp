// SPDX-License-Identifier: MIT
#include "WebAddress.h"

#include <QUrl>

#include <algorithm>

namespace
{

bool isForbidden(QChar character)
{
    return character.isSpace() || character.category() == QChar::Other_Control || character == u'"'
        || character == u'<' || character == u'>' || character == u'\\';
}

/// QUrl knows the host only lower case and in its DNS form.
QString hostAsWritten(QStringView text)
{
    QStringView authority = text.sliced(text.indexOf(u"//") + 2);
    const auto end = std::find_if(authority.begin(), authority.end(), [](QChar character) {
        return character == u'/' || character == u'?' || character == u'#';
    });
    authority.truncate(end - authority.begin());
    QStringView host = authority.sliced(authority.lastIndexOf(u'@') + 1);
    if (host.startsWith(u'['))
        return host.sliced(1, host.indexOf(u']') - 1).toString();
    if (const auto colon = host.indexOf(u':'); colon >= 0)
        host.truncate(colon);
    return host.toString();
}

std::optional<QUrl> parsed(const QString &text)
{
    if (std::any_of(text.begin(), text.end(), isForbidden))
        return std::nullopt;
    QUrl url(text, QUrl::TolerantMode);
    return url.isValid() ? std::optional(std::move(url)) : std::nullopt;
}

QString hostOf(const QUrl &url, const QString &text)
{
    return url.host().isEmpty() ? QString() : hostAsWritten(text);
}

} // namespace

WebAddress::WebAddress(QString host, QByteArray encoded)
    : m_host(std::move(host))
    , m_encoded(std::move(encoded))
{
}

std::optional<WebAddress> WebAddress::parse(const QString &text)
{
    const auto url = parsed(text);
    if (!url)
        return std::nullopt;
    return WebAddress(hostOf(*url, text), url->toEncoded());
}

QString hostOf(const QString &url)
{
    const auto parsedUrl = parsed(url);
    return parsedUrl ? hostOf(*parsedUrl, url) : QString();
}
