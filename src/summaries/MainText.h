// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The first 1,500 characters of the text that a reader of the page sees, its white space made
/// single spaces. Pages are read from their beginning in growing parts, the first of `firstPart`
/// bytes, until that many characters are certain; the result does not depend on it.
std::string mainText(std::string_view html, std::size_t firstPart = 12 << 10);
