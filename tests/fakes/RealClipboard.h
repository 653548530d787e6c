// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardLimits.h"
#include "ThreadedClipboard.h"

#include <QTest>

/// What the user is told where nothing, or only some, can be seen.
inline const QString unseen = QStringLiteral(
    "Strandloom cannot watch the clipboard here: the compositor offers no data-control interface "
    "and no X server answers. Links are not recorded.");
inline const QString halfSeen =
    QStringLiteral("This desktop shows Strandloom only what is copied in X11 programs. Links "
                   "copied elsewhere are not recorded.");

/// The real ones are too long for a test.
inline ClipboardLimits shortLimits()
{
    using namespace std::chrono_literals;
    ClipboardLimits limits;
    limits.step = 300ms;
    limits.total = 900ms;
    limits.greeting = 500ms;
    limits.firstPause = 50ms;
    return limits;
}

template <typename Worker>
std::unique_ptr<ThreadedClipboard> makeClipboard(const QByteArray &display)
{
    return std::make_unique<ThreadedClipboard>(std::make_unique<Worker>(display, shortLimits()));
}

/// Connected, reading, and at count 1. Null when that takes too long.
template <typename Worker>
std::unique_ptr<ThreadedClipboard> makeReadingClipboard(const QByteArray &display)
{
    const QString first = QStringLiteral("first");
    auto clipboard = makeClipboard<Worker>(display);
    clipboard->startReading();
    clipboard->setText(first);
    const bool isReady = QTest::qWaitFor([&] { return clipboard->text() == first; }, 10'000);
    return isReady ? std::move(clipboard) : nullptr;
}
