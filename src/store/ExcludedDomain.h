// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"

#include <QString>
#include <QUuid>

/// A host whose addresses are not captured, nor those of its sub-domains, in whatever case.
struct ExcludedDomain {
    QUuid id;
    QString domain; ///< as entered
    Instant addedAt;
};
