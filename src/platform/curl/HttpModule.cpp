// SPDX-License-Identifier: MIT
#include "HttpModule.h"

#include "CurlHttpClient.h"

#include <curl/curl.h>
#include <memory>

namespace
{

HttpSend makeSend()
{
    return [client = std::make_shared<CurlHttpClient>()](HttpRequest request) {
        return client->send(std::move(request));
    };
}

} // namespace

extern "C" Q_DECL_EXPORT const ModuleOffer *strandloomModule()
{
    CurlMulti::initializeLibrary(); // which takes its time, and this is not the main thread
    static const HttpModule module{{}, curl_version_info(CURLVERSION_NOW)->version, makeSend};
    return &module;
}
