// SPDX-License-Identifier: MIT
#pragma once

/// Tells assistive technology what the widgets of our own are: lists, rows and texts. To be called
/// by their constructors before anything is told of them. Main thread only.
void installAccessibility();
