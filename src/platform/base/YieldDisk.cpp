// SPDX-License-Identifier: MIT
#include "YieldDisk.h"

#include "DebugLog.h"

#include <QString>

#include <linux/ioprio.h>
#include <sys/syscall.h>
#include <unistd.h>

void yieldDisk()
{
    constexpr int thisThread = 0;
    if (syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, thisThread,
                IOPRIO_PRIO_VALUE(IOPRIO_CLASS_IDLE, 0))
        != 0)
        debugLog(u"The disk cannot be yielded: " + qt_error_string());
}
