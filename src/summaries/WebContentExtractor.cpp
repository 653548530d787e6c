// SPDX-License-Identifier: MIT
#include "WebContentExtractor.h"

#include "PageEvidence.h"
#include "PageText.h"
#include "WebAddress.h"
#include "async/OnPool.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QByteArray userAgent = "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 "
                             "(KHTML, like Gecko) Version/17.0 Safari/605.1.15"_ba;

HttpRequest pageRequest(const WebAddress &address)
{
    HttpRequest request;
    request.url = address.encoded();
    request.inactivityLimit = 15s;
    request.headers = {{"User-Agent"_ba, userAgent}};
    return request;
}

} // namespace

QString description(ExtractionError error)
{
    switch (error) {
    case ExtractionError::invalidURL:
        return u"Invalid URL"_s;
    case ExtractionError::fetchFailed:
        return u"Failed to fetch page"_s;
    case ExtractionError::encodingError:
        return u"Could not decode page content"_s;
    }
    Q_UNREACHABLE();
}

QString description(const ExtractionFailure &failure)
{
    if (const auto *const error = std::get_if<HttpError>(&failure))
        return error->message;
    return description(std::get<ExtractionError>(failure));
}

std::string pageText(const HttpResponse &response)
{
    return decodePage(response.body, response.isTruncated ? BodyEnd::truncated : BodyEnd::complete);
}

WebContentExtractor::WebContentExtractor(HttpClient &http, QThreadPool &pages, const Clock &clock)
    : m_http(http)
    , m_pages(pages)
    , m_clock(clock)
{
}

Task<Expected<HttpResponse, ExtractionFailure>> WebContentExtractor::fetchPage(QString url)
{
    Permit permit(m_calls);
    co_await permit;
    auto response = co_await fetch(url);
    co_return response;
}

Task<Expected<EvidencePacket, ExtractionFailure>> WebContentExtractor::extract(QString url)
{
    Permit permit(m_calls);
    co_await permit;
    const auto response = co_await fetch(url);
    if (!response)
        co_return Unexpected{response.error()};

    OnPool<EvidencePacket> reading(m_pages, [response = *response, url, now = m_clock.now()] {
        return parsePacket(pageText(response), url, now);
    });
    const EvidencePacket packet = co_await reading;
    co_return packet;
}

Task<Expected<HttpResponse, ExtractionFailure>> WebContentExtractor::fetch(QString url)
{
    const auto address = WebAddress::parse(url);
    if (!address)
        co_return Unexpected{ExtractionFailure(ExtractionError::invalidURL)};
    const HttpRequest request = pageRequest(*address);
    const HttpReply reply = co_await m_http.send(request);
    if (!reply)
        co_return Unexpected{ExtractionFailure(reply.error())};
    if (reply->status < 200 || reply->status > 299)
        co_return Unexpected{ExtractionFailure(ExtractionError::fetchFailed)};
    co_return *reply;
}
