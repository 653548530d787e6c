// SPDX-License-Identifier: MIT
#pragma once

#include "HttpClient.h"
#include "Module.h"

#include <functional>

/// What `HttpClient::send` promises. Outlives the tasks that it returns.
using HttpSend = std::function<Task<HttpReply>(HttpRequest)>;

/// What the module with libcurl offers.
struct HttpModule : ModuleOffer {
    static constexpr auto name = "http";

    const char *libraryVersion; ///< of libcurl
    HttpSend (*makeSend)(); ///< main thread only
};
