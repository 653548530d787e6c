// SPDX-License-Identifier: MIT
#include "LazyHttpClient.h"

#include "Module.h"
#include "Utf8.h"
#include "async/OnPool.h"

Task<HttpReply> LazyHttpClient::send(HttpRequest request)
{
    if (!m_send) {
        OnPool<LoadedModule<HttpModule>> loading(m_pool, loadModule<HttpModule>);
        const auto module = co_await loading;
        if (!module)
            co_return Unexpected{HttpError{HttpError::Kind::notLoaded, readUtf8(module.error())}};
        if (!m_send) // another request may have been as early
            m_send = (*module)->makeSend();
    }
    HttpReply reply = co_await m_send(std::move(request));
    co_return reply;
}
