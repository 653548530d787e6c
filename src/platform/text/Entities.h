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

/// Replaces `&amp;` everywhere, then the entities of `table`: "&amp;lt;" ends as "<". Others stay
/// as they are. No replacement is, or makes of what stands beside it, another entity.
std::string decodeEntities(std::string text, std::span<const Entity> table);
