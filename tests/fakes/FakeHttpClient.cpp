// SPDX-License-Identifier: MIT
#include "FakeHttpClient.h"

#include <QObject>
#include <QTimer>

#include <algorithm>
#include <optional>

/// What `send` waits for; abandoning it takes it from the queue.
class FakeHttpClient::Exchange
{
public:
    Exchange(FakeHttpClient &client, const HttpRequest &request)
        : m_client(client)
        , m_request(request)
    {
    }
    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;
    ~Exchange() { std::erase(m_client.m_waiting, this); }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> sender)
    {
        m_sender = sender;
        m_client.m_waiting.push_back(this);
        if (m_client.m_answer)
            QTimer::singleShot(0, &m_context, [this] { finish(m_client.m_answer(m_request)); });
    }
    HttpReply await_resume() { return std::move(*m_reply); }

    void finish(HttpReply reply)
    {
        m_reply = std::move(reply);
        std::erase(m_client.m_waiting, this);
        m_sender.resume();
    }

private:
    FakeHttpClient &m_client;
    HttpRequest m_request;
    std::coroutine_handle<> m_sender;
    std::optional<HttpReply> m_reply;
    QObject m_context;
};

void FakeHttpClient::answerWith(std::function<HttpReply(const HttpRequest &)> answer)
{
    m_answer = std::move(answer);
}

void FakeHttpClient::answerNext(HttpReply reply)
{
    m_waiting.front()->finish(std::move(reply));
}

Task<HttpReply> FakeHttpClient::send(HttpRequest request)
{
    m_requests.append(request);
    Exchange exchange(*this, request);
    HttpReply reply = co_await exchange;
    co_return reply;
}
