// SPDX-License-Identifier: MIT
#include "AddressRules.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <netinet/in.h>

namespace
{

struct Ipv4Block {
    std::array<uint8_t, 4> first;
    int length; ///< of the prefix, in bits
};

/// RFC 6890 and its registry of special-purpose addresses.
constexpr Ipv4Block specialIpv4[] = {
    {{0, 0, 0, 0}, 8},      {{10, 0, 0, 0}, 8},    {{100, 64, 0, 0}, 10}, {{127, 0, 0, 0}, 8},
    {{169, 254, 0, 0}, 16}, {{172, 16, 0, 0}, 12}, {{192, 0, 0, 0}, 24},  {{192, 168, 0, 0}, 16},
    {{198, 18, 0, 0}, 15},  {{224, 0, 0, 0}, 4},   {{240, 0, 0, 0}, 4},
};

uint32_t number(const uint8_t *bytes)
{
    return uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8
        | uint32_t(bytes[3]);
}

bool isPublicIpv4(const uint8_t *address)
{
    return std::none_of(std::begin(specialIpv4), std::end(specialIpv4), [&](const auto &block) {
        const uint32_t mask = ~uint32_t(0) << (32 - block.length);
        return (number(address) & mask) == number(block.first.data());
    });
}

bool isPublicIpv6(const in6_addr &address)
{
    const uint8_t *const bytes = address.s6_addr;
    if (IN6_IS_ADDR_V4MAPPED(&address))
        return isPublicIpv4(bytes + 12);
    const uint8_t nat64[12] = {0x00, 0x64, 0xff, 0x9b}; // 64:ff9b::/96
    if (std::memcmp(bytes, nat64, sizeof nat64) == 0)
        return isPublicIpv4(bytes + 12);
    return (bytes[0] & 0xe0) == 0x20; // 2000::/3 is all that is handed out
}

} // namespace

bool isPublicAddress(const sockaddr &address)
{
    if (address.sa_family == AF_INET) {
        const auto &ipv4 = reinterpret_cast<const sockaddr_in &>(address);
        return isPublicIpv4(reinterpret_cast<const uint8_t *>(&ipv4.sin_addr));
    }
    if (address.sa_family == AF_INET6)
        return isPublicIpv6(reinterpret_cast<const sockaddr_in6 &>(address).sin6_addr);
    return false;
}
