// SPDX-License-Identifier: MIT
#include "TitleFetcher.h"

#include "DebugLog.h"
#include "HttpClient.h"
#include "ModelContext.h"
#include "PageText.h"
#include "PageTitle.h"
#include "Utf8.h"
#include "WebAddress.h"
#include "async/OnPool.h"

using namespace Qt::StringLiterals;

namespace
{

/// Sites answer by it; it is given and not ours to improve.
const QByteArray titleUserAgent =
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15"_ba;

HttpRequest titleRequest(const QByteArray &address)
{
    HttpRequest request;
    request.url = address;
    request.inactivityLimit = std::chrono::seconds(10);
    request.headers = {{"User-Agent"_ba, titleUserAgent}};
    return request;
}

std::optional<QString> titleIn(const HttpResponse &response)
{
    const auto end = response.isTruncated ? BodyEnd::truncated : BodyEnd::complete;
    const auto title = extractTitle(decodePage(response.body, end));
    return title ? std::optional(readUtf8(*title)) : std::nullopt;
}

} // namespace

Task<> TitleFetcher::fetchTitle(ModelContext *context, LinkId id)
{
    const auto link = context->link(id);
    if (!link)
        co_return;
    const auto title = co_await titleOf(link->url);
    if (!title || !context->link(id))
        co_return; // deleted meanwhile: what is gone stays gone
    context->setTitle(id, *title);
    debugLog(u"Fetched title: " + *title);
}

Task<std::optional<QString>> TitleFetcher::titleOf(QString url)
{
    const auto address = WebAddress::parse(url);
    if (!address)
        co_return std::nullopt;
    const HttpRequest request = titleRequest(address->encoded());
    const HttpReply reply = co_await m_http.send(request);
    if (!reply) {
        debugLog(u"Failed to fetch title for " + url + u": " + reply.error().message);
        co_return std::nullopt;
    }
    if (reply->status != 200)
        co_return std::nullopt;

    OnPool<std::optional<QString>> reading(m_pages,
                                           [response = *reply] { return titleIn(response); });
    const std::optional<QString> title = co_await reading;
    co_return title;
}
