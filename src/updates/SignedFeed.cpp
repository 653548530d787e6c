// SPDX-License-Identifier: MIT
#include "SignedFeed.h"

#include "AtomicFile.h"
#include "Characters.h"
#include "DebugLog.h"
#include "HttpClient.h"

#include <QFile>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = UpdateError::Kind;

namespace
{

constexpr auto checkInterval = 24h;
constexpr qint64 feedLimit = 64 << 10; // bytes
constexpr std::size_t notesLimit = 500; // characters

/// Nothing in it tells one installation from another.
HttpRequest feedRequest(const QUrl &address)
{
    HttpRequest request;
    request.url = address.toEncoded();
    request.headers = {{"User-Agent", "strandloom/" STRANDLOOM_VERSION}};
    request.inactivityLimit = 10s;
    request.totalLimit = 10s;
    request.bodyLimit = feedLimit;
    request.wireLimit = 2 * feedLimit;
    return request;
}

UpdateError transportError(const HttpError &error)
{
    if (error.kind == HttpError::Kind::refused)
        return {Kind::refused};
    return {Kind::unreachable, error.message};
}

QUrl signatureOf(QUrl address)
{
    address.setPath(address.path() + u".minisig"_s);
    return address;
}

/// 0 when nothing is kept there.
qint64 keptSequence(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return std::max(0LL, file.read(32).trimmed().toLongLong());
}

} // namespace

SignedFeed::SignedFeed(HttpClient &http, Clock &clock, FeedSource source, QVersionNumber current)
    : m_http(http)
    , m_clock(clock)
    , m_source(std::move(source))
    , m_current(current.normalized())
    , m_highestSequence(keptSequence(m_source.sequenceFile))
{
}

SignedFeed::~SignedFeed() = default;

void SignedFeed::setAutomaticallyChecksForUpdates(bool checks)
{
    m_nextCheck.reset();
    if (checks)
        scheduleNextCheck();
}

void SignedFeed::scheduleNextCheck()
{
    m_nextCheck = m_clock.after(checkInterval, [this] {
        begin();
        scheduleNextCheck();
    });
}

void SignedFeed::checkForUpdatesInBackground()
{
    begin();
}

void SignedFeed::checkForUpdates()
{
    m_isUserWaiting = true;
    Q_EMIT statusChanged({UpdateStatus::Kind::checking});
    begin();
}

void SignedFeed::begin()
{
    if (!std::exchange(m_isChecking, true))
        m_tasks.start(check());
}

Task<> SignedFeed::check()
{
    const FeedResult feed = co_await fetchFeed();
    m_isChecking = false;
    report(feed);
}

Task<SignedFeed::FeedResult> SignedFeed::fetchFeed()
{
    if (!m_source.address || m_source.keys.isEmpty())
        co_return Unexpected{UpdateError{Kind::notConfigured}};
    const QUrl address = *m_source.address;
    const Download document = co_await download(address);
    if (!document)
        co_return Unexpected{document.error()};
    const QUrl signatureAddress = signatureOf(address);
    const Download signature = co_await download(signatureAddress);
    if (!signature && signature.error().kind == Kind::missing)
        co_return Unexpected{UpdateError{Kind::notSigned}};
    if (!signature)
        co_return Unexpected{signature.error()};
    co_return accept(*document, *signature);
}

Task<SignedFeed::Download> SignedFeed::download(QUrl address)
{
    const HttpRequest request = feedRequest(address);
    const HttpReply reply = co_await m_http.send(request);
    if (!reply)
        co_return Unexpected{transportError(reply.error())};
    if (reply->status == 404 || reply->status == 410)
        co_return Unexpected{UpdateError{Kind::missing}};
    if (reply->status != 200) {
        const QString answer = UpdateError::tr("The server answers with %1.").arg(reply->status);
        co_return Unexpected{UpdateError{Kind::unreachable, answer}};
    }
    if (reply->isTruncated)
        co_return Unexpected{UpdateError{Kind::oversized}};
    co_return reply->body;
}

SignedFeed::FeedResult SignedFeed::accept(const QByteArray &document, const QByteArray &signature)
{
    auto feed = readFeed(document, signature, {m_source.keys, m_clock.now(), m_highestSequence});
    if (feed && feed->sequence > m_highestSequence)
        keepSequence(feed->sequence);
    return feed;
}

void SignedFeed::keepSequence(qint64 sequence)
{
    m_highestSequence = sequence;
    const QByteArray text = QByteArray::number(sequence);
    if (const auto kept = AtomicFile::replace(m_source.sequenceFile, text); !kept)
        debugLog(u"Failed to keep the update feed's sequence: " + description(kept.error()));
}

void SignedFeed::report(const FeedResult &feed)
{
    const bool isUserWaiting = std::exchange(m_isUserWaiting, false);
    UpdateStatus status{UpdateStatus::Kind::upToDate};
    if (!feed) {
        status.kind = UpdateStatus::Kind::failed;
        status.reason = description(feed.error());
        debugLog(u"Failed to check for updates: " + status.reason);
    } else if (feed->version.normalized() > m_current) {
        status = {UpdateStatus::Kind::newVersion, feed->version.toString(), feed->releasePage,
                  firstCharacters(feed->notes, notesLimit).toString()};
    }
    const bool isNews = status.kind == UpdateStatus::Kind::newVersion
        && std::exchange(m_announced, feed->version) != feed->version;
    if (isUserWaiting || isNews)
        Q_EMIT statusChanged(status);
}
