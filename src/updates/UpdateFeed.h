// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"
#include "Expected.h"
#include "Minisign.h"
#include "UpdateError.h"

#include <QVersionNumber>

/// What the update feed says: a JSON object of `sequence` (a whole number that never falls from one
/// edition to the next), `expires` (ISO 8601 with a time zone), `version`, `releasePage` (https)
/// and perhaps `notes`. Other fields are left to the future.
struct UpdateFeed {
    qint64 sequence = 0;
    Instant expires;
    QVersionNumber version;
    QString releasePage;
    QString notes; ///< plain text; may be empty
};

/// What a feed must keep to be believed.
struct FeedTerms {
    QList<MinisignKey> keys;
    Instant now;
    qint64 highestSequence = 0; ///< of the feeds that were believed before
};

/// The feed in `document`, whose detached minisign signature is `signature`.
Expected<UpdateFeed, UpdateError> readFeed(const QByteArray &document, const QByteArray &signature,
                                           const FeedTerms &terms);
