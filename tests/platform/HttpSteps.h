// SPDX-License-Identifier: MIT
#pragma once

#include "CurlHttpClient.h"
#include "LoopbackServer.h"
#include "Waiting.h"

#include <optional>

using Failure = std::optional<HttpError::Kind>;

/// A GET that a busy machine can answer in time.
inline HttpRequest get(const QByteArray &url)
{
    HttpRequest request;
    request.url = url;
    request.headers = {{"User-Agent", "tester"}};
    request.inactivityLimit = request.totalLimit = std::chrono::seconds(9); // `waitFor` has ten
    request.bodyLimit = 1 << 20;
    request.wireLimit = 4 << 20;
    return request;
}

/// The same with limits that a test can wait for.
inline HttpRequest impatient(HttpRequest request)
{
    request.inactivityLimit = std::chrono::milliseconds(400);
    request.totalLimit = std::chrono::milliseconds(1500);
    return request;
}

inline HttpReply exchange(HttpClient &client, const HttpRequest &request)
{
    auto reply = waitFor(client.send(request));
    return reply ? *reply
                 : Unexpected{HttpError{HttpError::Kind::broken, QStringLiteral("waited in vain")}};
}

inline Failure failureOf(const HttpReply &reply)
{
    return reply ? Failure() : Failure(reply.error().kind);
}

inline LoopbackServer::Answer redirect(const QByteArray &to)
{
    return LoopbackServer::reply(302, "elsewhere", "Location: " + to + "\r\n");
}
