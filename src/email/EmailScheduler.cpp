// SPDX-License-Identifier: MIT
#include "EmailScheduler.h"

#include "Calendar.h"
#include "DebugLog.h"
#include "EmailService.h"
#include "LinkCursor.h"
#include "ModelContext.h"
#include "Preferences.h"
#include "ResendKeyService.h"

#include <QDateTime>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace
{

constexpr int defaultHour = 8;
constexpr milliseconds longestSleep = 60s; // no alarm counts the time of a suspend

QList<LinkId> idsOf(const QList<CapturedLink> &links)
{
    QList<LinkId> ids;
    ids.reserve(links.size());
    for (const CapturedLink &link : links)
        ids.append(link.id);
    return ids;
}

} // namespace

EmailScheduler::EmailScheduler(const Parts &parts, QObject *parent)
    : QObject(parent)
    , m_parts(parts)
{
    connect(&m_parts.keys, &ResendKeyService::becameKnown, this, [this] {
        if (!m_modelContext)
            return; // the start itself is still to come
        scheduleNextEmail();
        checkAndSendIfNeeded();
    });
}

void EmailScheduler::scheduleNextEmail()
{
    m_due.reset();
    schedule(nextSendDate(sendHour()));
}

/// Aims at `date`; goes on as before if that is aimed at already.
void EmailScheduler::schedule(std::optional<Instant> date)
{
    if (date && date == m_due)
        return wait();
    m_timer.reset();
    m_due.reset();
    const bool isEnabled =
        m_parts.preferences.boolean(preferenceKeys::emailDigestEnabled).value_or(false);
    if (!isEnabled || !m_parts.keys.isConfigured()) {
        m_isScheduled = false;
        return;
    }
    if (!date)
        return;

    const auto minutes =
        std::chrono::duration_cast<std::chrono::minutes>(*date - m_parts.clock.now());
    debugLog(u"Scheduling email for "
             % dateTimeOf(*date).toUTC().toString(u"yyyy-MM-dd HH:mm:ss +0000") % u" (in "
             % QString::number(minutes.count()) % u" minutes)");
    m_due = date;
    wait();
    m_isScheduled = true;
}

void EmailScheduler::wait()
{
    const auto left = std::chrono::ceil<milliseconds>(*m_due - m_parts.clock.now());
    m_timer = m_parts.clock.after(std::min(left, longestSleep), [this] { wake(); });
}

void EmailScheduler::wake()
{
    if (m_parts.clock.now() >= *m_due) {
        m_due.reset();
        m_tasks.start(sendScheduledEmail());
        return;
    }
    // Another date than before means that the clock or its zone was set.
    const auto next = nextSendDate(sendHour());
    schedule(next == m_due ? next : nextUnsentDate());
}

/// Aims anew after a send, which the user may have done meanwhile.
void EmailScheduler::scheduleAfter(Instant begun)
{
    const auto next = nextSendDate(sendHour());
    // A digest that is late, after a suspend, is also that of the day on which it went out.
    const bool wasLate = next && next != m_due && isSameDay(begun, *next);
    schedule(wasLate ? nextUnsentDate() : next);
}

void EmailScheduler::checkAndSendIfNeeded()
{
    if (!m_parts.preferences.boolean(preferenceKeys::emailDigestEnabled).value_or(false))
        return;
    const Instant now = m_parts.clock.now();
    if (dateTimeOf(now).time().hour() < sendHour())
        return;
    const auto lastSent = m_parts.preferences.date(preferenceKeys::lastEmailSentDate);
    if (!lastSent || !isSameDay(*lastSent, now))
        m_tasks.start(sendScheduledEmail());
}

Task<> EmailScheduler::sendScheduledEmail()
{
    if (m_isSending)
        co_return;
    const Instant begun = m_parts.clock.now();
    const QString recipient =
        m_parts.preferences.string(preferenceKeys::emailAddress).value_or(QString());
    if (!m_parts.keys.isConfigured() || recipient.isEmpty()) {
        scheduleAfter(begun);
        co_return;
    }
    if (!m_modelContext)
        co_return;

    m_isSending = true;
    co_await deliver(recipient);
    m_isSending = false;
    scheduleAfter(begun);
}

Task<> EmailScheduler::deliver(QString recipient)
{
    const Instant due = lastSendDate();
    const ModelContext &context = *m_modelContext;
    const auto links = co_await collectVisibleLinks(context, LinkOrder::newestFirst);
    if (!links) {
        debugLog(u"Scheduled email failed: " + description(links.error()));
        co_return;
    }
    if (links->isEmpty())
        co_return;
    const SendResult sent = co_await m_parts.service.sendDigest(*links, recipient, due);
    if (!sent) {
        debugLog(u"Scheduled email failed: " + description(sent.error()));
        co_return;
    }
    recordSent(*links);
}

void EmailScheduler::recordSent(const QList<CapturedLink> &links)
{
    m_parts.preferences.set(preferenceKeys::lastEmailSentDate, m_parts.clock.now());
    if (!m_parts.preferences.boolean(preferenceKeys::clearAfterEmail).value_or(false))
        return;
    if (const auto hidden = m_modelContext->hide(idsOf(links)); !hidden)
        debugLog(u"Failed to hide the links that were sent: " + description(hidden.error()));
}

std::optional<Instant> EmailScheduler::nextSendDate(int hour) const
{
    const Instant now = m_parts.clock.now();
    const auto today = atHour(now, hour);
    return today && *today <= now ? atHour(now, hour, 1) : today;
}

/// The next send date in a day for which no digest has gone out yet.
std::optional<Instant> EmailScheduler::nextUnsentDate() const
{
    const auto next = nextSendDate(sendHour());
    const auto lastSent = m_parts.preferences.date(preferenceKeys::lastEmailSentDate);
    const bool isSent = next && lastSent && isSameDay(*lastSent, *next);
    return isSent ? atHour(*next, sendHour(), 1) : next;
}

/// The latest send date that has passed.
Instant EmailScheduler::lastSendDate() const
{
    const Instant now = m_parts.clock.now();
    const auto today = atHour(now, sendHour());
    const auto last = today && *today <= now ? today : atHour(now, sendHour(), -1);
    return last.value_or(now);
}

int EmailScheduler::sendHour() const
{
    const int hour = m_parts.preferences.integer(preferenceKeys::emailSendHour).value_or(0);
    return hour < 1 ? defaultHour : hour; // midnight can be chosen, but has never meant midnight
}
