// SPDX-License-Identifier: MIT
#pragma once

#include "EvidencePacket.h"

#include <string_view>

/// What the page `html` (UTF-8), fetched from `url` at `now`, says about itself. Linear in its
/// size; any thread.
EvidencePacket parsePacket(std::string_view html, const QString &url, Instant now);
