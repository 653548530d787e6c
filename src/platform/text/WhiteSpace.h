// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

/// `text` (UTF-8) without the Unicode white space at both ends.
std::string_view trimmed(std::string_view text);
/// The pieces of `text` (UTF-8) between Unicode white space, joined by single spaces.
std::string simplified(std::string_view text);
