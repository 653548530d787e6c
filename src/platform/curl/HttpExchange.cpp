// SPDX-License-Identifier: MIT
#include "HttpExchange.h"

#include "ProxyRules.h"
#include "Utf8.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>

using Kind = HttpError::Kind;

namespace
{

constexpr long redirectLimit = 20;
constexpr qint64 slowestUpload = 16 << 10; // bytes a second

Kind kindOf(CURLcode code)
{
    switch (code) {
    case CURLE_URL_MALFORMAT:
        return Kind::badUrl;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_CONNECT:
        return Kind::unreachable;
    case CURLE_OPERATION_TIMEDOUT:
        return Kind::timedOut;
    case CURLE_TOO_MANY_REDIRECTS:
        return Kind::tooManyRedirects;
    case CURLE_UNSUPPORTED_PROTOCOL:
        return Kind::refused;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
        return Kind::tls;
    default:
        return Kind::broken;
    }
}

Unexpected<HttpError> error(Kind kind, const char *message)
{
    return {HttpError{kind, readUtf8(message)}};
}

/// The address in its text form; absent when it is none.
std::optional<sockaddr_storage> addressOf(const char *text)
{
    sockaddr_storage storage = {};
    auto &ipv4 = reinterpret_cast<sockaddr_in &>(storage);
    auto &ipv6 = reinterpret_cast<sockaddr_in6 &>(storage);
    if (inet_pton(AF_INET, text, &ipv4.sin_addr) == 1)
        storage.ss_family = AF_INET;
    else if (inet_pton(AF_INET6, text, &ipv6.sin6_addr) == 1)
        storage.ss_family = AF_INET6;
    else
        return std::nullopt;
    return storage;
}

/// Where there is none, curl takes the first part of the path for it.
bool namesHost(const QByteArray &url)
{
    const auto begin = url.indexOf("://") + 3;
    return begin >= 3 && begin < url.size() && !std::strchr("/?#", url.at(begin));
}

/// Whether a header line tells of an encoding that curl gives up at.
bool namesUnknownEncoding(const QByteArray &line)
{
    constexpr QByteArrayView name = "content-encoding:";
    const QByteArray lower = line.toLower();
    if (!lower.startsWith(name))
        return false;
    const QList<QByteArray> codings = lower.sliced(name.size()).split(',');
    return std::any_of(codings.begin(), codings.end(), [](const QByteArray &coding) {
        const QByteArrayView known[] = {"",       "identity", "none", "gzip",
                                        "x-gzip", "deflate",  "br",   "zstd"};
        return std::find(std::begin(known), std::end(known), coding.trimmed()) == std::end(known);
    });
}

/// A line break in a header would begin another one.
bool hasBrokenHeader(const HttpRequest &request)
{
    const auto isBroken = [](const QByteArray &text) {
        return text.contains('\r') || text.contains('\n') || text.contains('\0');
    };
    return std::any_of(request.headers.begin(), request.headers.end(),
                       [&isBroken](const HttpHeader &header) {
                           return isBroken(header.name) || isBroken(header.value);
                       });
}

} // namespace

HttpExchange::HttpExchange(CurlMulti &multi, const HttpNetwork &network, HttpRequest request)
    : m_multi(multi)
    , m_network(network)
    , m_request(std::move(request))
    , m_transfer(curl_easy_init())
    , m_alive(std::make_shared<HttpExchange *>(this))
{
    m_inactivity.setSingleShot(true);
    m_inactivity.setTimerType(Qt::PreciseTimer);
    m_inactivity.setInterval(m_request.inactivityLimit);
    // Queued: what it does destroys the timer.
    QObject::connect(
        &m_inactivity, &QTimer::timeout, &m_multi,
        [alive = m_alive] {
            if (*alive)
                (*alive)->finish(CURLE_OPERATION_TIMEDOUT);
        },
        Qt::QueuedConnection);
}

HttpExchange::~HttpExchange()
{
    *m_alive = nullptr;
    m_multi.remove(m_transfer.get());
}

void HttpExchange::await_suspend(std::coroutine_handle<> sender)
{
    m_sender = sender;
    m_isRefused = hasBrokenHeader(m_request);
    m_hasNoHost = !namesHost(m_request.url);
    if (m_isRefused || m_hasNoHost) {
        m_inactivity.setInterval(0);
        m_inactivity.start(); // the answer comes from the main loop
        return;
    }
    configure();
    m_inactivity.start();
    m_multi.add(m_transfer.get(), [alive = m_alive](CURLcode code) {
        if (*alive)
            (*alive)->finish(code);
    });
}

void HttpExchange::configure()
{
    CURL *const transfer = m_transfer.get();
    curl_easy_setopt(transfer, CURLOPT_URL, m_request.url.constData());
    curl_easy_setopt(transfer, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(transfer, CURLOPT_ERRORBUFFER, m_errorText);
    curl_easy_setopt(transfer, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(transfer, CURLOPT_QUICK_EXIT, 1L); // a slow resolver must not hold the end up
    const std::chrono::seconds upload(m_request.body.size() / slowestUpload);
    const std::chrono::milliseconds total = m_request.totalLimit + upload;
    curl_easy_setopt(transfer, CURLOPT_TIMEOUT_MS, long(total.count()));
    curl_easy_setopt(transfer, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(transfer, CURLOPT_WRITEFUNCTION, &HttpExchange::bodyArrived);
    curl_easy_setopt(transfer, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(transfer, CURLOPT_HEADERFUNCTION, &HttpExchange::headArrived);
    curl_easy_setopt(transfer, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(transfer, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(transfer, CURLOPT_XFERINFOFUNCTION, &HttpExchange::progressed);
    curl_easy_setopt(transfer, CURLOPT_XFERINFODATA, this);
    configureRedirects();
    configureMethod();
    configureTrust();
    addHeaders();
}

void HttpExchange::configureRedirects()
{
    CURL *const transfer = m_transfer.get();
    const bool follows = m_request.method == HttpRequest::Method::get;
    curl_easy_setopt(transfer, CURLOPT_FOLLOWLOCATION, follows ? 1L : 0L);
    curl_easy_setopt(transfer, CURLOPT_MAXREDIRS, redirectLimit);
    curl_easy_setopt(transfer, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    // The one judges new connections, the other those that are used again.
    curl_easy_setopt(transfer, CURLOPT_OPENSOCKETFUNCTION, &HttpExchange::openSocket);
    curl_easy_setopt(transfer, CURLOPT_OPENSOCKETDATA, this);
    curl_easy_setopt(transfer, CURLOPT_PREREQFUNCTION, &HttpExchange::aboutToRequest);
    curl_easy_setopt(transfer, CURLOPT_PREREQDATA, this);
}

void HttpExchange::configureMethod()
{
    CURL *const transfer = m_transfer.get();
    if (m_request.method == HttpRequest::Method::get) {
        curl_easy_setopt(transfer, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_2TLS));
        // Some pages send whoever comes without their cookie in a circle.
        curl_easy_setopt(transfer, CURLOPT_COOKIEFILE, "");
        // The user in an address is for the server that asks for one, not for all to see.
        curl_easy_setopt(transfer, CURLOPT_HTTPAUTH, long(CURLAUTH_BASIC | CURLAUTH_DIGEST));
        return;
    }
    curl_easy_setopt(transfer, CURLOPT_POST, 1L);
    curl_easy_setopt(transfer, CURLOPT_POSTFIELDS, m_request.body.constData());
    curl_easy_setopt(transfer, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(m_request.body.size()));
    // On a used connection that turns out dead curl would send the request again.
    curl_easy_setopt(transfer, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(transfer, CURLOPT_FRESH_CONNECT, 1L);
    curl_easy_setopt(transfer, CURLOPT_FORBID_REUSE, 1L);
    curl_easy_setopt(transfer, CURLOPT_USERAGENT, "strandloom/" STRANDLOOM_VERSION);
}

void HttpExchange::configureTrust()
{
    CURL *const transfer = m_transfer.get();
    if (!m_network.caFile.isEmpty()) {
        curl_easy_setopt(transfer, CURLOPT_CAINFO, m_network.caFile.constData());
    } else if (const char *const folder = curl_version_info(CURLVERSION_NOW)->capath) {
        // The system's one-file bundle is parsed anew for every connection, which takes 20 ms.
        curl_easy_setopt(transfer, CURLOPT_CAINFO, nullptr);
        curl_easy_setopt(transfer, CURLOPT_CAPATH, folder);
    }
}

void HttpExchange::addHeaders()
{
    const auto add = [this](const QByteArray &line) {
        curl_slist *const longer = curl_slist_append(m_headers.get(), line.constData());
        (void)m_headers.release();
        m_headers.reset(longer);
    };
    for (const HttpHeader &header : m_request.headers)
        add(header.name + ": " + header.value);
    if (m_request.method == HttpRequest::Method::post)
        add("Expect:"); // else curl waits a second for leave to send a long body
    curl_easy_setopt(m_transfer.get(), CURLOPT_HTTPHEADER, m_headers.get());
}

size_t HttpExchange::bodyArrived(char *bytes, size_t, size_t count, void *self)
{
    auto &exchange = *static_cast<HttpExchange *>(self);
    exchange.m_inactivity.start();
    QByteArray &body = exchange.m_response.body;
    const qint64 room = exchange.m_request.bodyLimit - body.size();
    body.append(bytes, std::min(room, qint64(count)));
    exchange.m_response.isTruncated = qint64(count) > room;
    return exchange.m_response.isTruncated ? CURL_WRITEFUNC_ERROR : count;
}

size_t HttpExchange::headArrived(char *bytes, size_t, size_t count, void *self)
{
    auto &exchange = *static_cast<HttpExchange *>(self);
    exchange.m_inactivity.start();
    exchange.m_wireBytes += curl_off_t(count);
    CURL *const transfer = exchange.m_transfer.get();
    const QByteArray line = QByteArray::fromRawData(bytes, qsizetype(count));
    if (line.startsWith("HTTP/"))
        curl_easy_setopt(transfer, CURLOPT_HTTP_CONTENT_DECODING, 1L);
    else if (namesUnknownEncoding(line)) // then browsers take the body as it comes
        curl_easy_setopt(transfer, CURLOPT_HTTP_CONTENT_DECODING, 0L);
    return count;
}

int HttpExchange::progressed(void *self, curl_off_t, curl_off_t received, curl_off_t,
                             curl_off_t sent)
{
    auto &exchange = *static_cast<HttpExchange *>(self);
    if (received < exchange.m_hopBytes)
        exchange.m_wireBytes += exchange.m_hopBytes; // the next hop counts from zero
    if (received > exchange.m_hopBytes || sent > exchange.m_sentBytes)
        exchange.m_inactivity.start(); // the body of a redirect is seen only here
    exchange.m_hopBytes = received;
    exchange.m_sentBytes = sent;
    exchange.m_isFlooded = exchange.m_wireBytes + received > exchange.m_request.wireLimit;
    return exchange.m_isFlooded ? 1 : 0;
}

curl_socket_t HttpExchange::openSocket(void *self, curlsocktype, curl_sockaddr *address)
{
    auto &exchange = *static_cast<HttpExchange *>(self);
    if (!exchange.mayContact(address->addr)) {
        exchange.m_isRefused = true;
        return CURL_SOCKET_BAD;
    }
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

int HttpExchange::aboutToRequest(void *self, char *address, char *, int, int)
{
    auto &exchange = *static_cast<HttpExchange *>(self);
    const auto storage = addressOf(address);
    const auto *const where = storage ? reinterpret_cast<const sockaddr *>(&*storage) : nullptr;
    if (!where || !exchange.mayContact(*where)) {
        exchange.m_isRefused = true;
        return CURL_PREREQFUNC_ABORT;
    }
    exchange.m_isRefused = false; // another address of the same host may have been refused before
    exchange.m_wasPublic |= exchange.m_network.isPublic(*where) || exchange.isProxied();
    exchange.m_wasSecure |= exchange.isAt("https:");
    return CURL_PREREQFUNC_OK;
}

/// A public page must not make the program knock at the doors of the user's own network, nor a
/// secure one make it go on in the open.
bool HttpExchange::mayContact(const sockaddr &address) const
{
    if (m_wasSecure && !isAt("https:"))
        return false;
    return !m_wasPublic || m_network.isPublic(address) || isProxied();
}

/// The connected address is then the proxy's and tells nothing about the page's, which is taken for
/// one outside.
bool HttpExchange::isProxied() const
{
    return goesThroughProxy(effectiveUrl());
}

bool HttpExchange::isAt(const char *scheme) const
{
    return effectiveUrl().toLower().startsWith(scheme);
}

QByteArray HttpExchange::effectiveUrl() const
{
    const char *url = nullptr;
    curl_easy_getinfo(m_transfer.get(), CURLINFO_EFFECTIVE_URL, &url);
    return url;
}

void HttpExchange::finish(CURLcode code)
{
    m_inactivity.stop();
    m_multi.remove(m_transfer.get());
    m_reply = replyFor(code);
    m_sender.resume(); // may destroy this
}

HttpReply HttpExchange::replyFor(CURLcode code)
{
    if (m_hasNoHost)
        return error(Kind::badUrl, "The address names no host.");
    if (m_isRefused)
        return error(Kind::refused, "The address may not be asked for from here.");
    if (m_isFlooded)
        return error(Kind::broken, "The answer is too large.");
    if (code == CURLE_OUT_OF_MEMORY) // its word for a header line that is longer than it takes
        return error(Kind::broken, "The header of the answer is too large.");
    // What is not HTTP at all has the code of a scheme that is not allowed.
    if (code == CURLE_UNSUPPORTED_PROTOCOL && (isAt("http:") || isAt("https:")))
        code = CURLE_WEIRD_SERVER_REPLY;
    if (code != CURLE_OK && !m_response.isTruncated) {
        const bool hasText = m_errorText[0] != '\0';
        return error(kindOf(code), hasText ? m_errorText : curl_easy_strerror(code));
    }
    long status = 0;
    curl_easy_getinfo(m_transfer.get(), CURLINFO_RESPONSE_CODE, &status);
    m_response.status = int(status);
    return std::move(m_response);
}
