// SPDX-License-Identifier: MIT
#include "SummaryService.h"

#include "Characters.h"
#include "DebugLog.h"
#include "LocalMLService.h"
#include "ModelContext.h"
#include "WebContentExtractor.h"

#include <QScopeGuard>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto pauseBetweenLinks = 100ms;
constexpr std::size_t loggedCharacters = 50;

QString diagnostic(const ExtractionFailure &failure, const QString &url)
{
    if (const auto *error = std::get_if<ExtractionError>(&failure))
        return u"Extraction failed for "_s + url + u": " + description(*error);
    return u"Unexpected error summarizing "_s + url + u": " + std::get<HttpError>(failure).message;
}

} // namespace

SummaryService::SummaryService(ModelContext &context, LocalMLService &mlService,
                               WebContentExtractor &extractor, Clock &clock, QObject *parent)
    : QObject(parent)
    , m_context(context)
    , m_mlService(mlService)
    , m_extractor(extractor)
    , m_clock(clock)
{
}

Task<std::optional<QString>> SummaryService::summarize(LinkId id)
{
    if (!m_mlService.isModelLoaded()) {
        const auto loaded = co_await m_mlService.loadModel();
        if (!loaded) {
            debugLog(u"Failed to load model for summarization: " + description(loaded.error()));
            co_return std::nullopt;
        }
    }
    const auto requested = m_context.link(id);
    if (!requested)
        co_return std::nullopt;
    const QString url = requested->url;
    const auto packet = co_await m_extractor.extract(url);
    if (!packet) {
        debugLog(diagnostic(packet.error(), url));
        co_return std::nullopt;
    }

    const auto link = m_context.link(id);
    if (!link)
        co_return std::nullopt; // deleted meanwhile
    const auto title = packet->title ? packet->title : packet->ogTitle;
    if (title && link->title.value_or(QString()).isEmpty())
        m_context.setTitle(id, *title);

    const auto text = m_mlService.generateSummary(*packet);
    if (!text) {
        debugLog(u"ML inference failed for "_s + url + u": " + description(text.error()));
        co_return std::nullopt;
    }
    debugLog(u"Generated summary for "_s + url + u": " + firstCharacters(*text, loggedCharacters)
             + u"...");
    co_return *text;
}

Task<> SummaryService::summarizeAll(QList<LinkId> ids)
{
    return summarizeSelected(withoutSummary(ids)); // those of now, however late it is awaited
}

Task<> SummaryService::summarizeSelected(QList<LinkId> ids)
{
    if (ids.isEmpty())
        co_return;
    Task<> batch = runBatch(ids);
    co_await m_tasks.startAndWait(std::move(batch));
}

/// Several may run; they take turns at the extractor, page by page.
Task<> SummaryService::runBatch(QList<LinkId> ids)
{
    ++m_batches;
    m_isSummarizing = true;
    m_lastError = QString();
    addProgress({0, int(ids.size())});
    const auto idle = qScopeGuard([this] {
        if (--m_batches > 0)
            return;
        m_isSummarizing = false;
        m_currentProgress = std::nullopt;
    });

    if (!m_mlService.isModelLoaded()) {
        const auto loaded = co_await m_mlService.loadModel();
        if (!loaded) {
            const QString reason = description(loaded.error());
            m_lastError = reason;
            debugLog(u"Failed to load model: " + reason);
            co_return;
        }
    }
    for (const LinkId &id : std::as_const(ids)) {
        if (!withoutSummary({id}).isEmpty()) { // another batch may have been first
            const auto summary = co_await summarize(id);
            if (summary)
                m_context.setSummary(id, *summary);
        }
        addProgress({1, 0});
        Sleep pause(m_clock, pauseBetweenLinks);
        co_await pause;
    }
    debugLog(u"Batch summarization complete: %1 links processed"_s.arg(ids.size()));
}

void SummaryService::addProgress(const SummaryProgress &progress)
{
    const auto now = m_currentProgress.value().value_or(SummaryProgress());
    m_currentProgress = SummaryProgress{now.done + progress.done, now.total + progress.total};
}

QList<LinkId> SummaryService::withoutSummary(const QList<LinkId> &ids) const
{
    QList<LinkId> selected;
    for (const LinkId &id : ids) {
        const auto link = m_context.link(id);
        if (link && !link->summary)
            selected.append(id);
    }
    return selected;
}
