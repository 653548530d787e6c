// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

/// The first `limit` prices in a page: `[$£€]\s*[\d,]+(?:\.\d{2})?`, with white space and digits
/// of all scripts.
std::vector<std::string_view> prices(std::string_view html, std::size_t limit);
