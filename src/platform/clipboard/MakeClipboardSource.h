// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardSource.h"

#include <memory>

/// The clipboard of the desktop this process runs on. Returns at once; whether all copies can be
/// seen is known a little later (`limitation()`).
std::unique_ptr<ClipboardSource> makeClipboardSource();
