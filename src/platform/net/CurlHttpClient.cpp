// SPDX-License-Identifier: MIT
#include "CurlHttpClient.h"

#include "HttpExchange.h"

#include <optional>

namespace
{
constexpr std::size_t getLimit = 4; // a page of links must not become a flood of requests
}

CurlHttpClient::CurlHttpClient(HttpNetwork network)
    : m_network(std::move(network))
    , m_gets(getLimit)
{
}

CurlHttpClient::~CurlHttpClient() = default;

Task<HttpReply> CurlHttpClient::send(HttpRequest request)
{
    std::optional<Turn> turn;
    if (request.method == HttpRequest::Method::get) {
        Turn &place = turn.emplace(m_gets);
        co_await place;
    }
    HttpExchange exchange(m_multi, m_network, std::move(request));
    HttpReply reply = co_await exchange;
    co_return reply;
}
