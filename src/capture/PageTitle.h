// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The title of a page given as UTF-8: its title element, else its Open Graph title. Absent when
/// neither has text; line breaks inside stay.
std::optional<std::string> extractTitle(std::string_view html);
