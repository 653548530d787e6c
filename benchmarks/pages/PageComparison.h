// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

/// Makes `count` mutated pages and reads titles and packets from them, by our rules and by those
/// over ICU. The first page, with both readings, from which they differ; absent when they agree.
std::optional<std::string> firstDifference(unsigned seed, int count);
