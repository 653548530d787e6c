// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"
#include "Expected.h"
#include "StoreError.h"

class ModelContext;
class Preferences;

struct Pruned {
    qint64 count = 0;
    int days = 0; ///< the age that the user chose; 0 when links are kept for ever
};

/// Deletes the links that were copied more than "autoPruneDays" calendar days before `now`, hidden
/// and exported ones too. Never chosen means never: 0, less, or absent.
Expected<Pruned, StoreError> pruneOldLinks(ModelContext &context, const Preferences &preferences,
                                           Instant now);
