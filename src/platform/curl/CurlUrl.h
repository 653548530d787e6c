// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <curl/curl.h>
#include <memory>

/// An address as libcurl reads it. Its parts are lower case, and empty where it cannot.
class CurlUrl
{
public:
    explicit CurlUrl(const QByteArray &url)
        : m_url(curl_url(), curl_url_cleanup)
    {
        curl_url_set(m_url.get(), CURLUPART_URL, url.constData(), 0);
    }

    QByteArray scheme() const { return part(CURLUPART_SCHEME); }
    /// An IPv6 address stands in its brackets.
    QByteArray host() const { return part(CURLUPART_HOST); }

private:
    QByteArray part(CURLUPart which) const
    {
        char *text = nullptr;
        if (curl_url_get(m_url.get(), which, &text, 0) != CURLUE_OK)
            return {};
        const QByteArray value(text);
        curl_free(text);
        return value.toLower();
    }

    std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> m_url;
};
