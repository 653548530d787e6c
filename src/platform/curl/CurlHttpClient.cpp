// SPDX-License-Identifier: MIT
#include "CurlHttpClient.h"

#include "CurlUrl.h"
#include "HttpExchange.h"

#include <optional>

namespace
{
// Links copied at once must not become a flood of requests, nor wait for the slow one among them.
constexpr std::size_t getLimit = 32;
constexpr std::size_t hostLimit = 4;
} // namespace

CurlHttpClient::CurlHttpClient(HttpNetwork network)
    : m_network(std::move(network))
    , m_gets(getLimit, hostLimit)
{
}

CurlHttpClient::~CurlHttpClient() = default;

Task<HttpReply> CurlHttpClient::send(HttpRequest request)
{
    std::optional<Permit> permit;
    if (request.method == HttpRequest::Method::get) {
        Permit &ofGet = permit.emplace(m_gets, CurlUrl(request.url).host());
        co_await ofGet;
    }
    HttpExchange exchange(m_multi, m_network, std::move(request));
    HttpReply reply = co_await exchange;
    co_return reply;
}
