// SPDX-License-Identifier: MIT
#include "MakeClipboardSource.h"

#include "DesktopClipboard.h"
#include "ThreadedClipboard.h"

std::unique_ptr<ClipboardSource> makeClipboardSource()
{
    return std::make_unique<ThreadedClipboard>(std::make_unique<DesktopClipboard>());
}
