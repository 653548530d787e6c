// SPDX-License-Identifier: MIT
#pragma once

#include "HttpModule.h"

class QThreadPool;

/// HTTP by the module for it, which the first request loads on a thread of `pool`. When that
/// cannot be done, requests fail.
class LazyHttpClient final : public HttpClient
{
public:
    /// `pool` outlives the client.
    explicit LazyHttpClient(QThreadPool &pool)
        : m_pool(pool)
    {
    }

    Task<HttpReply> send(HttpRequest request) override;

private:
    QThreadPool &m_pool;
    HttpSend m_send; ///< empty until the module is there
};
