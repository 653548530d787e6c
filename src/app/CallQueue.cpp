// SPDX-License-Identifier: MIT
#include "CallQueue.h"

#include "async/YieldToLoop.h"

#include <QDBusConnection>

using namespace Qt::StringLiterals;

namespace
{

/// A caller who waits for each answer has one.
constexpr int callsPerCaller = 100;
constexpr qsizetype sizePerCaller = 8 << 20;
constexpr qsizetype sizeInAll = 64 << 20;

void answer(const QDBusMessage &call, const CallQueue::Answer &answer)
{
    if (!call.isReplyRequired())
        return;
    QDBusConnection::sessionBus().send(
        answer ? call.createReply(*answer)
               : call.createErrorReply(answer.error().name, answer.error().reason));
}

} // namespace

void refuse(const QDBusMessage &call, const CallError &error)
{
    call.setDelayedReply(true); // this is the reply
    answer(call, Unexpected{error});
}

bool CallQueue::hasRoom(const QString &caller, qsizetype size) const
{
    const Waiting waiting = m_waiting.value(caller);
    return waiting.calls < callsPerCaller && waiting.size + size <= sizePerCaller
        && m_size + size <= sizeInAll;
}

void CallQueue::add(const QDBusMessage &call, qsizetype size, Work work)
{
    const QString caller = call.service();
    if (!hasRoom(caller, size))
        return refuse(call, {busyError, u"too many calls are waiting"_s});
    call.setDelayedReply(true);
    Waiting &waiting = m_waiting[caller];
    ++waiting.calls;
    waiting.size += size;
    m_size += size;
    m_calls.push_back({call, size, std::move(work)});
    if (m_calls.size() == 1)
        m_tasks.start(answerAll());
}

Task<> CallQueue::answerAll()
{
    while (!m_calls.empty()) {
        YieldToLoop yield;
        co_await yield;
        const Work work = m_calls.front().work;
        const Answer result = co_await work();
        const Call call = std::move(m_calls.front());
        m_calls.pop_front();
        Waiting &waiting = m_waiting[call.message.service()];
        waiting.size -= call.size;
        if (--waiting.calls == 0)
            m_waiting.remove(call.message.service());
        m_size -= call.size;
        answer(call.message, result);
    }
}
