// SPDX-License-Identifier: MIT
#pragma once

#include "AddressRules.h"
#include "CurlMulti.h"
#include "HttpClient.h"
#include "async/Semaphore.h"

#include <functional>

/// What depends on the network the program is in.
struct HttpNetwork {
    std::function<bool(const sockaddr &)> isPublic = isPublicAddress;
    QByteArray caFile; ///< certificates to trust instead of the system's; empty: the system's
};

/// HTTP through libcurl on the main loop. At most 32 GETs run at once, four to one host; others
/// wait in their order.
class CurlHttpClient final : public HttpClient
{
public:
    explicit CurlHttpClient(HttpNetwork network = {});
    ~CurlHttpClient() override;

    Task<HttpReply> send(HttpRequest request) override;

private:
    HttpNetwork m_network;
    CurlMulti m_multi;
    Semaphore m_gets;
};
