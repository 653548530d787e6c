#include "http/CurlHttpClient.h"

#include "http/HttpExchange.h"

#include <algorithm>

namespace
{
constexpr int getLimit = 4; // a page of links must not become a flood of requests
}

/// The right of a GET to run, waited for in line: `co_await turn;`, given back when it is
/// destroyed.
class CurlHttpClient::Turn
{
public:
    explicit Turn(CurlHttpClient &client)
        : m_client(client)
    {
    }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;
    ~Turn()
    {
        if (m_isRunning)
            passOn();
        else
            std::erase(m_client.m_waitingGets, this);
    }

    bool await_ready() noexcept
    {
        m_isRunning = m_client.m_runningGets < getLimit;
        m_client.m_runningGets += m_isRunning ? 1 : 0;
        return m_isRunning;
    }
    void await_suspend(std::coroutine_handle<> waiter)
    {
        m_waiter = waiter;
        m_client.m_waitingGets.push_back(this);
    }
    void await_resume() const noexcept {}

private:
    void passOn()
    {
        if (m_client.m_waitingGets.empty()) {
            --m_client.m_runningGets;
            return;
        }
        Turn *const next = m_client.m_waitingGets.front();
        m_client.m_waitingGets.pop_front();
        next->m_isRunning = true;
        // Later: this one may be going down with much else.
        QMetaObject::invokeMethod(
            &next->m_context, [next] { next->m_waiter.resume(); }, Qt::QueuedConnection);
    }

    CurlHttpClient &m_client;
    std::coroutine_handle<> m_waiter;
    QObject m_context; ///< takes the call back when the waiter is gone
    bool m_isRunning = false;
};

CurlHttpClient::CurlHttpClient(HttpNetwork network)
    : m_network(std::move(network))
{
}

CurlHttpClient::~CurlHttpClient() = default;

Task<HttpReply> CurlHttpClient::send(HttpRequest request)
{
    Turn turn(*this);
    if (request.method == HttpRequest::Method::get)
        co_await turn;
    HttpExchange exchange(m_multi, m_network, std::move(request));
    HttpReply reply = co_await exchange;
    co_return reply;
}
