// SPDX-License-Identifier: MIT
#include "Entities.h"

namespace
{

std::string replaced(std::string text, std::span<const Entity> table)
{
    std::string decoded;
    std::size_t done = 0;
    for (auto at = text.find('&'); at != std::string::npos; at = text.find('&', at + 1)) {
        const std::string_view rest = std::string_view(text).substr(at);
        for (const auto &[name, replacement] : table) {
            if (!rest.starts_with(name))
                continue;
            decoded.append(text, done, at - done).append(replacement);
            done = at + name.size();
            break;
        }
    }
    return done == 0 ? std::move(text) : std::move(decoded.append(text, done));
}

} // namespace

std::string decodeEntities(std::string text, std::span<const Entity> table)
{
    constexpr Entity ampersand[] = {{"&amp;", "&"}};
    return replaced(replaced(std::move(text), ampersand), table);
}
