// SPDX-License-Identifier: MIT
#include "AddressRules.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <netinet/in.h>

namespace
{

template <std::size_t size>
struct Block {
    std::array<uint8_t, size> first;
    int length; ///< of the prefix, in bits
};

/// RFC 6890 and its registry of special-purpose addresses.
constexpr Block<4> specialIpv4[] = {
    {{0, 0, 0, 0}, 8},      {{10, 0, 0, 0}, 8},    {{100, 64, 0, 0}, 10},   {{127, 0, 0, 0}, 8},
    {{169, 254, 0, 0}, 16}, {{172, 16, 0, 0}, 12}, {{192, 0, 0, 0}, 24},    {{192, 0, 2, 0}, 24},
    {{192, 168, 0, 0}, 16}, {{198, 18, 0, 0}, 15}, {{198, 51, 100, 0}, 24}, {{203, 0, 113, 0}, 24},
    {{224, 0, 0, 0}, 4},    {{240, 0, 0, 0}, 4},
};

constexpr Block<16> globalIpv6 = {{0x20}, 3}; // all that is handed out, except:
constexpr Block<16> specialIpv6[] = {
    {{0x20, 0x01, 0x00}, 23}, // protocols' own, Teredo among them
    {{0x20, 0x01, 0x0d, 0xb8}, 32},
    {{0x3f, 0xff, 0x00}, 20},
};

/// IPv6 addresses that stand for the IPv4 address which begins at a byte of theirs.
struct Ipv4Dress {
    Block<16> block;
    int begin;
};
constexpr Ipv4Dress ipv4Dresses[] = {
    {{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff}, 96}, 12}, // mapped
    {{{0x00, 0x64, 0xff, 0x9b}, 96}, 12}, // NAT64
    {{{0x20, 0x02}, 16}, 2}, // 6to4
};

template <std::size_t size>
bool isIn(const Block<size> &block, const uint8_t *address)
{
    return havePrefixInCommon(address, block.first.data(), block.length);
}

bool isPublicIpv4(const uint8_t *address)
{
    return std::none_of(std::begin(specialIpv4), std::end(specialIpv4),
                        [&](const auto &block) { return isIn(block, address); });
}

bool isPublicIpv6(const uint8_t *address)
{
    for (const Ipv4Dress &dress : ipv4Dresses) {
        if (isIn(dress.block, address))
            return isPublicIpv4(address + dress.begin);
    }
    return isIn(globalIpv6, address)
        && std::none_of(std::begin(specialIpv6), std::end(specialIpv6),
                        [&](const auto &block) { return isIn(block, address); });
}

} // namespace

bool havePrefixInCommon(const uint8_t *address, const uint8_t *other, int bits)
{
    const int bytes = bits / 8;
    const int rest = bits % 8;
    return std::memcmp(address, other, std::size_t(bytes)) == 0
        && (rest == 0 || (address[bytes] ^ other[bytes]) >> (8 - rest) == 0);
}

bool isPublicAddress(const sockaddr &address)
{
    if (address.sa_family == AF_INET) {
        const auto &ipv4 = reinterpret_cast<const sockaddr_in &>(address);
        return isPublicIpv4(reinterpret_cast<const uint8_t *>(&ipv4.sin_addr));
    }
    if (address.sa_family == AF_INET6)
        return isPublicIpv6(reinterpret_cast<const sockaddr_in6 &>(address).sin6_addr.s6_addr);
    return false;
}
