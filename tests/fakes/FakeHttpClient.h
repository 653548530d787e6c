// SPDX-License-Identifier: MIT
#pragma once

#include "HttpClient.h"

#include <QList>

#include <coroutine>
#include <deque>
#include <functional>
#include <memory>

/// Answers requests when the test says so, or by itself one loop turn later.
class FakeHttpClient final : public HttpClient
{
public:
    /// From here on every request is answered by `answer`, one loop turn later.
    void answerWith(std::function<HttpReply(const HttpRequest &)> answer);
    /// Answers the oldest request that waits.
    void answerNext(HttpReply reply);
    int waiting() const { return int(m_waiting.size()); }
    const QList<HttpRequest> &requests() const { return m_requests; }

    Task<HttpReply> send(HttpRequest request) override;

private:
    class Exchange;

    QList<HttpRequest> m_requests;
    std::function<HttpReply(const HttpRequest &)> m_answer;
    std::deque<Exchange *> m_waiting;
};
