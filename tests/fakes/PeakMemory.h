// SPDX-License-Identifier: MIT
#pragma once

#include <sys/resource.h>

/// The most memory that this process has held at any time.
inline long peakMemoryKiB()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// By how much it may grow for reading a clipboard.
#ifdef __SANITIZE_ADDRESS__
constexpr long memoryAllowanceKiB = 200 * 1024; // freed memory is kept for a while
#else
constexpr long memoryAllowanceKiB = 20 * 1024;
#endif
