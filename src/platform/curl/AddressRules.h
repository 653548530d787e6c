// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

struct sockaddr;

/// Whether an address is one of the public internet: not loopback, link-local, of a private
/// network, shared, multicast, reserved, for documentation or unspecified (RFC 6890), nor an IPv4
/// address of that kind in IPv6 dress (mapped, NAT64, 6to4). Addresses of other families are not
/// public.
bool isPublicAddress(const sockaddr &address);

/// Whether the first `bits` bits are the same.
bool havePrefixInCommon(const uint8_t *address, const uint8_t *other, int bits);
