// SPDX-License-Identifier: MIT
#pragma once

class QByteArray;

/// Whether libcurl sends a request for `url` through a proxy, by the variables http_proxy,
/// https_proxy, HTTPS_PROXY, all_proxy, ALL_PROXY, no_proxy and NO_PROXY. It tells nobody itself.
bool goesThroughProxy(const QByteArray &url);
