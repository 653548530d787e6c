// SPDX-License-Identifier: MIT
#include "Services.h"

#include "clipboard/MakeClipboardSource.h"

Services::Services(ModelContext &modelContext, Clock &clock)
    : modelContext(modelContext)
    , clock(clock)
    , clipboard(makeClipboardSource())
{
    pages.setMaxThreadCount(1);
}
