// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardLimits.h"
#include "ClipboardWorker.h"

#include <QElapsedTimer>

struct ClipboardContents {
    /// Absent when there is none, it could not be had, or it must stay unknown.
    std::optional<QString> text;
    /// A secret, or copied before texts were asked for: never to be told, not even when restored.
    bool mustStayUnknown = false;
};

/// Of the clipboard, in any number.
struct OwnerChanges {
    qint64 count = 0;
    bool isLastAfterLoss = false; ///< the owner before the last had gone and nobody took its place
    bool isLost = false; ///< the last one has gone too

    void add(bool hasOwner);
    bool isEmpty() const { return count == 0 && !isLost; }
};

enum class Announcer {
    us,
    program,
    manager, ///< the program that has made itself known as the clipboard's manager
    keeper, ///< a compositor, with just the types by which it keeps the text of a program that
            ///< ended
};

/// Tells copies from other changes of the clipboard's owner. A program that ends takes its
/// selection with it, and somebody may announce the text again a moment later. Neither is a copy,
/// but a copy that is taken for that is a lost link. So this alone is a text restored:
///
/// 1. the text that was there before, right after the loss of its owner: from the manager, or from
///    any program within two seconds;
/// 2. after contents that must stay unknown, what the manager announces within half a second of the
///    loss of their owner;
/// 3. what a keeper announces, whose loss of the owner is not told: the text that was there before,
///    or any after contents that must stay unknown.
class CopyLedger
{
public:
    explicit CopyLedger(const ClipboardLimits &limits);

    void ownerChanged(const OwnerChanges &changes);
    /// What the clipboard holds after the owner changes so far, by whom the last was made. Absent
    /// when none of them was a copy.
    std::optional<ClipboardSnapshot> settle(const ClipboardContents &contents, Announcer announcer);

private:
    bool isRestored(const ClipboardContents &contents, Announcer announcer) const;

    ClipboardLimits m_limits;
    ClipboardContents m_held{{}, true}; // what was there before us is not ours to tell
    qint64 m_count = 0;
    qint64 m_unsettled = 0;
    QElapsedTimer m_lost;
    std::optional<std::chrono::milliseconds> m_sinceLoss; // at the last change, if right after one
};
