// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "async/Task.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <chrono>

struct HttpHeader {
    QByteArray name;
    QByteArray value;
};

/// One request with its limits. All limits hold at once; none can be switched off.
struct HttpRequest {
    enum class Method { get, post };

    QByteArray url; ///< http or https, encoded (`QUrl::toEncoded`)
    Method method = Method::get;
    QList<HttpHeader> headers; ///< sent as they stand
    QByteArray body; ///< of a POST
    std::chrono::milliseconds inactivityLimit{10'000}; ///< without a byte, from the request's start
    /// The whole exchange, redirects included; a second more for each 16 KiB of `body`.
    std::chrono::milliseconds totalLimit{60'000};
    qint64 bodyLimit = 4 << 20; ///< bytes after decoding; what comes beyond is dropped
    qint64 wireLimit = 16 << 20; ///< bytes received, bodies of redirects included
};

struct HttpResponse {
    int status = 0;
    QByteArray body;
    bool isTruncated = false; ///< the body was longer than `bodyLimit`
};

struct HttpError {
    enum class Kind {
        badUrl,
        unreachable,
        timedOut,
        tooManyRedirects,
        refused, ///< by our own rules: the scheme, or an address that a public page may not name
        tls,
        notLoaded, ///< the part of the program that does it
        broken, ///< the exchange ended early or made no sense
    };
    Kind kind = Kind::broken;
    QString message; ///< for people, in English
};

using HttpReply = Expected<HttpResponse, HttpError>;

/// Performs HTTP requests. Keeps no cookies from one exchange to the next, sends no referrer, and
/// the user in an address only to the server of that address when it asks for one. Main thread
/// only.
class HttpClient
{
public:
    virtual ~HttpClient() = default;
    /// One exchange; never answers within the call itself. A GET follows redirects (20 at most,
    /// never from https to http, never from a public address or through a proxy to a private one),
    /// a POST does not, and is never repeated. Destroying the task cancels the request.
    virtual Task<HttpReply> send(HttpRequest request) = 0;
};
