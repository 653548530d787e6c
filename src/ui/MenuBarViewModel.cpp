// SPDX-License-Identifier: MIT
#include "MenuBarViewModel.h"

#include "Calendar.h"
#include "ClipboardSource.h"
#include "DebugLog.h"
#include "LinkIntake.h"
#include "ModelContext.h"
#include "SummaryService.h"
#include "UrlOpener.h"

#include <QScopeGuard>

#include <utility>

using namespace std::chrono_literals;

namespace
{
constexpr auto answerTime = 4s;
constexpr auto readingTime = 6s; // of the clipboard, when nobody answers at all
constexpr auto copiedTime = 1500ms;
constexpr int longestWord = 40; // of a tool tip, in characters
} // namespace

MenuBarViewModel::MenuBarViewModel(const Dependencies &dependencies, QObject *parent)
    : QObject(parent)
    , m_dependencies(dependencies)
    , m_links(dependencies.modelContext)
    , m_dates(systemLocale())
    , m_titles(dependencies.http, dependencies.pages)
{
    recountToday();
    connect(&m_links, &LinkListModel::changed, this, &MenuBarViewModel::recountToday);
    connect(&m_dependencies.modelContext, &ModelContext::hasUnsavedChangesChanged, this,
            &MenuBarViewModel::changed);
    connect(&m_dependencies.clipboard, &ClipboardSource::limitationChanged, this,
            &MenuBarViewModel::changed);
    connect(&m_dependencies.clipboard, &ClipboardSource::fetched, this, &MenuBarViewModel::add);
}

MenuBarViewModel::~MenuBarViewModel() = default;

void MenuBarViewModel::setCurrentScreen(MenuBarScreen screen)
{
    m_currentScreen = screen;
    Q_EMIT changed();
}

LinkRow MenuBarViewModel::row(const ListPosition &position) const
{
    const auto link = m_dependencies.modelContext.link(position.id);
    if (!link)
        return {position, {}, {}, {}}; // it is about to go
    const QString title = shownText(link->title ? *link->title : link->url);
    const auto summary = link->summary ? std::optional(shownText(*link->summary)) : std::nullopt;
    const QString time = position.id == m_copied ? tr("Copied") : m_dates.shortTime(link->copiedAt);
    return {position, title, time, summary};
}

QStringList MenuBarViewModel::times() const
{
    QStringList times{tr("Copied")};
    for (int hour = 0; hour < 24; ++hour)
        times.append(m_dates.shortTime(Instant(std::chrono::hours(hour) + 48min)));
    return times;
}

QString MenuBarViewModel::toolTip(const LinkId &id) const
{
    const auto link = m_dependencies.modelContext.link(id);
    if (!link)
        return {};
    QString url = shownText(link->url);
    for (qsizetype at = longestWord; at < url.size(); at += longestWord + 1)
        url.insert(at, QChar(0x200b)); // where the line may break
    QStringList lines{url, m_dates.mediumDateShortTime(link->copiedAt)};
    if (link->title)
        lines.prepend(shownText(*link->title));
    for (QString &line : lines)
        line = line.toHtmlEscaped();
    return lines.join(u"<br>");
}

bool MenuBarViewModel::isEmpty() const
{
    return m_dependencies.modelContext.counts().visible == 0;
}

QString MenuBarViewModel::todayText() const
{
    return tr("%1 today").arg(m_today);
}

QString MenuBarViewModel::countText() const
{
    const qint64 all = m_dependencies.modelContext.counts().visible;
    return isSearching() ? tr("%1 of %2 links").arg(m_links.rowCount()).arg(all)
                         : tr("%1 links").arg(all);
}

void MenuBarViewModel::setSearchText(const QString &text)
{
    m_links.setSearchText(text);
    Q_EMIT changed();
}

QString MenuBarViewModel::nothingFoundText() const
{
    return m_links.isReading() ? QString() : tr("No links found");
}

QString MenuBarViewModel::notice() const
{
    const auto &reason = m_dependencies.modelContext.unsavedReason();
    if (reason && reason->kind == StoreError::Kind::gone)
        return tr("The store was removed or replaced. New links are kept in memory.");
    if (reason)
        return tr("Links cannot be saved at the moment. They are kept until they can.");
    if (!m_answer.isEmpty())
        return m_answer;
    if (!m_notice.isEmpty())
        return m_notice;
    return m_isPaused ? tr("Capturing is paused.") : m_dependencies.clipboard.limitation();
}

void MenuBarViewModel::setPaused(bool isPaused)
{
    m_isPaused = isPaused;
    Q_EMIT changed();
}

void MenuBarViewModel::setNotice(const QString &notice)
{
    m_notice = notice;
    Q_EMIT changed();
}

void MenuBarViewModel::setModelLoad(std::optional<double> progress)
{
    m_modelLoad = progress;
    Q_EMIT changed();
}

QString MenuBarViewModel::summarizeToolTip() const
{
    const qint64 missing = m_dependencies.modelContext.counts().visibleWithoutSummary;
    return missing > 0 ? tr("Generate AI summaries for %1 links").arg(missing)
                       : tr("All links have summaries");
}

void MenuBarViewModel::summarize()
{
    if (!m_isSummarizing)
        m_tasks.start(summarizeListed());
}

Task<> MenuBarViewModel::summarizeListed()
{
    m_isSummarizing = true;
    Q_EMIT changed();
    const auto idle = qScopeGuard([this] {
        m_isSummarizing = false;
        Q_EMIT changed();
    });
    const QList<LinkId> ids = m_dependencies.modelContext.visibleWithoutSummary();
    co_await m_dependencies.summaries.summarizeAll(ids);
}

void MenuBarViewModel::open(const LinkId &id)
{
    if (const auto link = m_dependencies.modelContext.link(id))
        m_dependencies.urlOpener.open(link->url);
}

void MenuBarViewModel::copyUrl(const LinkId &id)
{
    if (const auto link = m_dependencies.modelContext.link(id))
        copy(id, link->url);
}

void MenuBarViewModel::copySummary(const LinkId &id)
{
    const auto link = m_dependencies.modelContext.link(id);
    if (link && link->summary)
        copy(id, *link->summary);
}

void MenuBarViewModel::copy(const LinkId &id, const QString &text)
{
    m_dependencies.clipboard.setText(text);
    m_copied = id;
    m_copiedEnd = m_dependencies.clock.after(copiedTime, [this] {
        m_copied = LinkId();
        Q_EMIT timesChanged();
    });
    Q_EMIT timesChanged();
}

void MenuBarViewModel::remove(const LinkId &id)
{
    if (const auto removed = m_dependencies.modelContext.remove({id}); !removed)
        debugLog(u"Failed to delete: " + description(removed.error()));
}

/// What was copied before the program watched, or while it was paused, is read only now.
void MenuBarViewModel::paste()
{
    if (std::exchange(m_isPasting, true))
        return;
    m_answer = tr("Reading the clipboard…");
    m_answerEnd = m_dependencies.clock.after(readingTime, [this] { add({}); });
    Q_EMIT changed();
    m_dependencies.clipboard.fetch();
}

void MenuBarViewModel::add(const std::optional<QString> &address)
{
    if (!std::exchange(m_isPasting, false))
        return;
    m_answer = take(address.value_or(QString()));
    m_answerEnd = m_dependencies.clock.after(answerTime, [this] {
        m_answer.clear();
        Q_EMIT changed();
    });
    Q_EMIT changed();
}

QString MenuBarViewModel::take(const QString &address)
{
    const auto added =
        LinkIntake(m_dependencies.modelContext).add(address, m_dependencies.clock.now());
    if (!added) {
        debugLog(u"Failed to add: " + description(added.error()));
        return tr("The link could not be saved.");
    }
    if (*added) {
        m_tasks.start(m_titles.fetchTitle(&m_dependencies.modelContext, (*added)->id));
        return tr("The link was added.");
    }
    switch (added->error()) {
    case Refusal::noWebAddress:
        return tr("The clipboard holds no web address.");
    case Refusal::excluded:
        return tr("Links of this domain are excluded.");
    case Refusal::alreadyStored:
        return tr("The link is already there.");
    }
    Q_UNREACHABLE();
}

void MenuBarViewModel::recountToday()
{
    const Instant now = m_dependencies.clock.now();
    m_today = m_dependencies.modelContext.visibleSince(startOfDay(now));
    if (const auto tomorrow = addDays(startOfDay(now), 1)) {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*tomorrow - now);
        m_midnight = m_dependencies.clock.after(rest, [this] { recountToday(); });
    }
    Q_EMIT changed();
}
