// SPDX-License-Identifier: MIT
#pragma once

struct sockaddr;

/// Whether an address is one of the public internet: not loopback, link-local, of a private
/// network, shared, multicast, reserved or unspecified (RFC 6890), nor an IPv4 address of that kind
/// in IPv6 dress. Addresses of other families are not public.
bool isPublicAddress(const sockaddr &address);
