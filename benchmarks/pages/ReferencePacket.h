// SPDX-License-Identifier: MIT
#pragma once

#include "EvidencePacket.h"

/// The rules for packets over ICU's regular expressions and QString.
EvidencePacket referencePacket(const QString &html, const QString &url, Instant now);
