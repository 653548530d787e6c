// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

#include <QList>

/// `count` links as people copy them: titles, summaries and addresses in many scripts, some long,
/// some missing, over the last year. The same ones each time.
QList<CapturedLink> manyLinks(int count);
