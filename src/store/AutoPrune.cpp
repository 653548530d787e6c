// SPDX-License-Identifier: MIT
#include "AutoPrune.h"

#include "Calendar.h"
#include "ModelContext.h"
#include "Preferences.h"

Expected<Pruned, StoreError> pruneOldLinks(ModelContext &context, const Preferences &preferences,
                                           Instant now)
{
    const int days = preferences.integer(preferenceKeys::autoPruneDays).value_or(0);
    if (days < 1)
        return Pruned();
    const auto cutoff = addDays(now, -days);
    if (!cutoff)
        return Pruned();
    const auto count = context.removeCopiedBefore(*cutoff);
    if (!count)
        return Unexpected{count.error()};
    return Pruned{*count, days};
}
