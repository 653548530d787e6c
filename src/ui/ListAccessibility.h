// SPDX-License-Identifier: MIT
#pragma once

/// Makes screen readers see the list of links as a list and its rows as list items. More than once
/// is as good as once.
void installListAccessibility();
