// SPDX-License-Identifier: MIT
#pragma once

#include "CurlHttpClient.h"

#include <QTimer>

#include <coroutine>
#include <curl/curl.h>
#include <memory>
#include <optional>

/// One request on its way, as something to wait for: `co_await exchange;` starts it and gives the
/// reply, destroying it ends it.
class HttpExchange
{
public:
    /// Both references outlive the exchange.
    HttpExchange(CurlMulti &multi, const HttpNetwork &network, HttpRequest request);
    HttpExchange(const HttpExchange &) = delete;
    HttpExchange &operator=(const HttpExchange &) = delete;
    ~HttpExchange();

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> sender);
    HttpReply await_resume() { return std::move(*m_reply); }

private:
    struct CurlFree {
        void operator()(CURL *transfer) const { curl_easy_cleanup(transfer); }
        void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    };

    static size_t bodyArrived(char *bytes, size_t, size_t count, void *self);
    static size_t headArrived(char *bytes, size_t, size_t count, void *self);
    static int progressed(void *self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent);
    static curl_socket_t openSocket(void *self, curlsocktype, curl_sockaddr *address);
    static int aboutToRequest(void *self, char *address, char *, int, int);

    void configure();
    void configureRedirects();
    void configureMethod();
    void configureTrust();
    void addHeaders();
    bool mayContact(const sockaddr &address) const;
    bool isProxied() const;
    bool isAt(const char *scheme) const;
    QByteArray effectiveUrl() const;
    void finish(CURLcode code);
    HttpReply replyFor(CURLcode code);

    CurlMulti &m_multi;
    const HttpNetwork &m_network;
    const HttpRequest m_request;
    std::unique_ptr<CURL, CurlFree> m_transfer;
    std::unique_ptr<curl_slist, CurlFree> m_headers;
    char m_errorText[CURL_ERROR_SIZE] = {};
    QTimer m_inactivity;
    HttpResponse m_response;
    curl_off_t m_wireBytes = 0; ///< of earlier hops, and all heads
    curl_off_t m_hopBytes = 0;
    curl_off_t m_sentBytes = 0; ///< of the request's body
    bool m_hasNoHost = false;
    bool m_isFlooded = false;
    bool m_isRefused = false;
    bool m_wasPublic = false; ///< some hop was a public address, or behind a proxy
    bool m_wasSecure = false; ///< some hop was https
    std::coroutine_handle<> m_sender;
    std::optional<HttpReply> m_reply;
    std::shared_ptr<HttpExchange *>
        m_alive; ///< what callbacks look through, null when this is gone
};
