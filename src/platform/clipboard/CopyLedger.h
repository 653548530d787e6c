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

enum class Announcer {
    us,
    program,
    restorer, // known to bring back the texts of programs that end
};

/// Tells copies from other changes of the clipboard's owner. A program that ends takes its
/// selection with it, and a clipboard manager announces the text again a moment later: neither is a
/// copy.
class CopyLedger
{
public:
    explicit CopyLedger(const ClipboardLimits &limits);

    /// The owner has gone and nobody took its place.
    void ownerLost();
    void ownerChanged(Announcer announcer);
    /// What the clipboard holds after the owner changes so far. `offersLess` when the last of them
    /// only took types away from what the same program had offered before. Absent when none of the
    /// changes was a copy.
    std::optional<ClipboardSnapshot> settle(const ClipboardContents &contents,
                                            bool offersLess = false);

private:
    ClipboardLimits m_limits;
    ClipboardContents m_held{{}, true}; // what was there before us is not ours to tell
    qint64 m_count = 0;
    qint64 m_unsettled = 0;
    QElapsedTimer m_lost;
    bool m_mayBeRestored = false; // the last change
    bool m_mayAllBeRestored = true; // every unsettled one
};
