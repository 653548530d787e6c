// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>

/// A character reference of HTML and what stands for it, both in UTF-8.
struct Entity {
    std::string_view name;
    std::string_view replacement;
};

/// Replaces each entity of `table` everywhere before it turns to the next one: with `&amp;` first,
/// "&amp;lt;" ends as "<". Others stay as they are.
std::string decodeEntities(std::string text, std::span<const Entity> table);
