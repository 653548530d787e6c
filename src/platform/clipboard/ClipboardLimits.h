// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <chrono>

/// How much and how long other programs may keep us busy.
struct ClipboardLimits {
    /// A text of more bytes counts as none.
    qsizetype textBytes = 1 << 20;
    /// For one answer of the owner, and for all answers that make up one text.
    std::chrono::milliseconds step{2000};
    std::chrono::milliseconds total{5000};
    /// For the rest of a text after something newer was copied.
    std::chrono::milliseconds overtaken{500};
    /// For a compositor to tell what it offers.
    std::chrono::milliseconds greeting{3000};
    /// How long after the loss of its owner the same text is taken for a restored one.
    std::chrono::milliseconds restore{2000};
    /// The same for a text that is not known to us; short, since any copy would pass for it.
    std::chrono::milliseconds unknownRestore{500};
    /// The pauses between attempts to connect grow from the one to the other.
    std::chrono::milliseconds firstPause{500};
    std::chrono::milliseconds longestPause{30'000};
    /// For handing our own text to a clipboard manager at the end.
    std::chrono::milliseconds handOver{500};
};
