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

EmailScheduler::EmailScheduler(const Dependencies &dependencies, QObject *parent)
    : QObject(parent)
    , m_dependencies(dependencies)
{
    const auto whenStarted = [this](void (EmailScheduler::*act)()) {
        return [this, act] {
            if (m_modelContext)
                (this->*act)();
        };
    };
    connect(&m_dependencies.keys, &ResendKeyService::isConfiguredChanged, this,
            whenStarted(&EmailScheduler::scheduleNextEmail));
    connect(&m_dependencies.keys, &ResendKeyService::becameKnown, this,
            whenStarted(&EmailScheduler::checkAndSendIfNeeded));
}

void EmailScheduler::scheduleNextEmail()
{
    if (isEnabled() && !m_dependencies.keys.isKnown())
        m_dependencies.keys.refresh(); // without a digest, the first screen about mail does it
    aim(slotAt(nextSendDate(sendHour())));
}

void EmailScheduler::aim(const std::optional<Slot> &slot)
{
    m_timer.reset();
    m_aim.reset();
    if (!isEnabled() || !m_dependencies.keys.isConfigured()) {
        m_isScheduled = false;
        return;
    }
    if (!slot)
        return;

    const Instant date = due(*slot);
    const auto minutes =
        std::chrono::duration_cast<std::chrono::minutes>(date - m_dependencies.clock.now());
    debugLog(u"Scheduling email for "
             % dateTimeOf(date).toUTC().toString(u"yyyy-MM-dd HH:mm:ss +0000") % u" (in "
             % QString::number(minutes.count()) % u" minutes)");
    m_aim = slot;
    wait();
    m_isScheduled = true;
}

void EmailScheduler::wait()
{
    const auto left = std::chrono::ceil<milliseconds>(due(*m_aim) - m_dependencies.clock.now());
    m_timer = m_dependencies.clock.after(std::min(left, longestSleep), [this] { wake(); });
}

void EmailScheduler::wake()
{
    if (m_dependencies.clock.now() >= due(*m_aim)) {
        m_tasks.start(send(*std::exchange(m_aim, std::nullopt)));
        return;
    }
    const auto next = nextUnfiredSlot();
    if (next && due(*next) < due(*m_aim)) // the clock or its zone was set back
        aim(next);
    else
        wait();
}

void EmailScheduler::checkAndSendIfNeeded()
{
    if (!isEnabled())
        return;
    const Instant now = m_dependencies.clock.now();
    if (dateTimeOf(now).time().hour() < sendHour())
        return;
    const auto lastSent = m_dependencies.preferences.date(preferenceKeys::lastEmailSentDate);
    if (!lastSent || !isSameDay(*lastSent, now))
        m_tasks.start(sendScheduledEmail());
}

Task<> EmailScheduler::sendScheduledEmail()
{
    return send(lastSlot());
}

Task<> EmailScheduler::send(Slot slot)
{
    if (m_isSending)
        co_return;
    const QString recipient =
        m_dependencies.preferences.string(preferenceKeys::emailAddress).value_or(QString());
    const bool canSend = m_dependencies.keys.isKnown() && m_dependencies.keys.isConfigured();
    if (!canSend || recipient.isEmpty()) {
        aim(nextUnfiredSlot());
        co_return;
    }
    if (!m_modelContext)
        co_return;

    m_fired.append(slot);
    m_isSending = true;
    co_await deliver(recipient, slot);
    m_isSending = false;
    aim(nextUnfiredSlot());
}

Task<> EmailScheduler::deliver(QString recipient, Slot slot)
{
    const ModelContext &context = *m_modelContext;
    const auto links = co_await collectVisibleLinks(context, LinkOrder::newestFirst);
    if (!links) {
        debugLog(u"Scheduled email failed: " + description(links.error()));
        co_return;
    }
    if (links->isEmpty())
        co_return;
    const QByteArray name = occasion(slot);
    const SendResult sent = co_await m_dependencies.service.sendDigest(*links, recipient, name);
    if (!sent) {
        debugLog(u"Scheduled email failed: " + description(sent.error()));
        if (sent.error().isAnswer())
            m_dependencies.preferences.set(preferenceKeys::lastEmailRefusedDate,
                                           m_dependencies.clock.now());
        co_return;
    }
    recordSent(*links);
}

void EmailScheduler::recordSent(const QList<CapturedLink> &links)
{
    m_dependencies.preferences.set(preferenceKeys::lastEmailSentDate, m_dependencies.clock.now());
    if (!m_dependencies.preferences.boolean(preferenceKeys::clearAfterEmail).value_or(false))
        return;
    if (const auto hidden = m_modelContext->hide(idsOf(links)); !hidden)
        debugLog(u"Failed to hide the links that were sent: " + description(hidden.error()));
}

std::optional<Instant> EmailScheduler::nextSendDate(int hour) const
{
    const Instant now = m_dependencies.clock.now();
    const auto today = atHour(now, hour);
    return today && *today <= now ? atHour(now, hour, 1) : today;
}

EmailScheduler::Slot EmailScheduler::lastSlot() const
{
    const Instant now = m_dependencies.clock.now();
    const Slot today{dateTimeOf(now).date(), sendHour()};
    return due(today) <= now ? today : Slot{today.day.addDays(-1), today.hour};
}

/// The next slot but for those that were fired, which lie ahead when the clock was set back.
std::optional<EmailScheduler::Slot> EmailScheduler::nextUnfiredSlot() const
{
    auto slot = slotAt(nextSendDate(sendHour()));
    while (slot && m_fired.contains(*slot))
        slot = slotAt(atHour(due(*slot), slot->hour, 1));
    return slot;
}

std::optional<EmailScheduler::Slot> EmailScheduler::slotAt(std::optional<Instant> date) const
{
    return date ? std::optional(Slot{dateTimeOf(*date).date(), sendHour()}) : std::nullopt;
}

Instant EmailScheduler::due(const Slot &slot) const
{
    const QTime time(slot.hour, 0);
    return time.isValid() ? instantAt(slot.day, time) : m_dependencies.clock.now();
}

/// The name of the slot for the provider: the same after a restart, as nobody knows what has become
/// of a send that was cut off, but another one when the provider has refused a mail.
QByteArray EmailScheduler::occasion(const Slot &slot) const
{
    const auto refused = m_dependencies.preferences.date(preferenceKeys::lastEmailRefusedDate);
    const qint64 since = refused.value_or(Instant()).time_since_epoch().count();
    return slot.day.toString(Qt::ISODate).toLatin1() + 'T' + QByteArray::number(slot.hour) + ' '
        + QByteArray::number(since);
}

bool EmailScheduler::isEnabled() const
{
    return m_dependencies.preferences.boolean(preferenceKeys::emailDigestEnabled).value_or(false);
}

int EmailScheduler::sendHour() const
{
    const int hour = m_dependencies.preferences.integer(preferenceKeys::emailSendHour).value_or(0);
    return hour < 1 ? defaultHour : hour; // midnight can be chosen, but has never meant midnight
}
