// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

struct LinkCounts {
    qint64 stored = 0;
    qint64 visible = 0;
    qint64 visibleWithoutSummary = 0;

    LinkCounts &operator+=(const LinkCounts &other)
    {
        stored += other.stored;
        visible += other.visible;
        visibleWithoutSummary += other.visibleWithoutSummary;
        return *this;
    }
    LinkCounts &operator-=(const LinkCounts &other)
    {
        return *this += {-other.stored, -other.visible, -other.visibleWithoutSummary};
    }
    bool operator==(const LinkCounts &) const = default;
};

/// What the counts need to know of a link.
struct LinkState {
    bool isVisible = true;
    bool hasSummary = false;
};

inline LinkState stateOf(const CapturedLink &link)
{
    return {link.isVisible, link.summary.has_value()};
}

/// What one link adds.
inline LinkCounts countsOf(const LinkState &state)
{
    return {1, state.isVisible, state.isVisible && !state.hasSummary};
}
