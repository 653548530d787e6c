// SPDX-License-Identifier: MIT
#pragma once

/// Whether windows may be transparent in places: always below a Wayland compositor, on X11 while a
/// compositing manager runs.
bool isComposited();
