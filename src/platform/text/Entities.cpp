// SPDX-License-Identifier: MIT
#include "Entities.h"

std::string decodeEntities(std::string text, std::span<const Entity> table)
{
    if (text.find('&') == std::string::npos)
        return text;
    for (const auto &[name, replacement] : table) {
        std::string decoded;
        std::size_t rest = 0;
        for (auto at = text.find(name); at != std::string::npos; at = text.find(name, rest)) {
            decoded.append(text, rest, at - rest).append(replacement);
            rest = at + name.size();
        }
        if (rest > 0)
            text = std::move(decoded.append(text, rest));
    }
    return text;
}
