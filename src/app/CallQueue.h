// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "async/Scope.h"

#include <QDBusMessage>
#include <QHash>
#include <QLatin1StringView>
#include <QVariantList>

#include <deque>
#include <functional>

/// Why a call on the bus fails.
struct CallError {
    QLatin1StringView name;
    QString reason;
};

/// Calls from the bus, answered one after the other with turns of the main loop between them, so
/// that no number of calls keeps it from the user. Callers who do not wait for their answers are
/// refused when too many of theirs are waiting. Main thread only.
class CallQueue
{
public:
    using Answer = Expected<QVariantList, CallError>;
    using Work = std::function<Task<Answer>()>;

    /// What a refused call fails with.
    static constexpr QLatin1StringView busyError{"app.strandloom.Error.Busy"};

    /// Answers `call` with what comes out of `work`, later. `size` is about what it holds, in
    /// bytes.
    void add(const QDBusMessage &call, qsizetype size, Work work);

private:
    struct Call {
        QDBusMessage message;
        qsizetype size = 0;
        Work work;
    };
    struct Waiting {
        int calls = 0;
        qsizetype size = 0;
    };

    bool hasRoom(const QString &caller, qsizetype size) const;
    Task<> answerAll();

    std::deque<Call> m_calls; ///< the first is being answered
    QHash<QString, Waiting> m_waiting; ///< of each caller who waits
    qsizetype m_size = 0; ///< of all that wait
    Scope m_tasks;
};

/// Answers `call`, which is being handled, with `error` at once.
void refuse(const QDBusMessage &call, const CallError &error);
