// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "Expected.h"
#include "LinkIntake.h"
#include "commands/Terminal.h"

#include <QList>

#include <chrono>
#include <memory>

class Clock;

/// What became of an address.
struct Addition {
    QString refusal; ///< empty: it was taken
    std::optional<CapturedLink> untitled; ///< was taken, and nobody else will fetch its title
};

/// Changes the user's links for a command line. Main thread only.
class LinkWriter
{
public:
    using Result = Expected<void, CommandError>;
    virtual ~LinkWriter() = default;
    virtual Expected<Addition, CommandError> add(const QString &address) = 0;
    virtual Result setTitle(const LinkId &id, const QString &title) = 0;
    virtual Result remove(const QList<LinkId> &ids) = 0;
    virtual Result hideExported(const QList<LinkId> &ids) = 0;
    virtual Expected<IntakeCounts, CommandError> import(const QList<CapturedLink> &links) = 0;
};

/// Finds the way to write. The running program does it if there is one. Else this process opens the
/// store, and closes it again from time to time, so that the program can start meanwhile.
class WriteAccess
{
public:
    /// `clock` outlives the access.
    explicit WriteAccess(Clock &clock);
    ~WriteAccess();

    /// Good for calls made at once; ask again later. Waits for other command lines to finish.
    Expected<LinkWriter *, CommandError> writer();
    /// Keeps nobody else from writing.
    void release();

private:
    Expected<std::unique_ptr<LinkWriter>, CommandError> choose();

    Clock &m_clock;
    std::unique_ptr<LinkWriter> m_writer;
    std::chrono::milliseconds m_since{0}; ///< when `m_writer` was chosen
};
