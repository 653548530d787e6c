// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "LinkWriter.h"

#include <QList>

/// The stored links that `target` names: those with that URL, as written or as it would be stored,
/// or the one whose id begins with it (at least 4 hexadecimal digits). Never none; an error says
/// why there is none, and of an ambiguous id which links it may mean.
Expected<QList<CapturedLink>, CommandError> linksNamed(const QString &target);
