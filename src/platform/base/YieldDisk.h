// SPDX-License-Identifier: MIT
#pragma once

/// From here on, what this thread reads and writes waits until nobody else wants the disk.
void yieldDisk();
