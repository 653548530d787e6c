// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "Clock.h"
#include "async/Scope.h"

#include <QDate>
#include <QList>
#include <QObject>
#include <QProperty>

class EmailService;
class ModelContext;
class Preferences;
class ResendKeyService;

/// Mails the digest of the visible links once a day at the hour the user has chosen. Follows the
/// wall clock: through suspends, steps of the clock and changes of the time zone. What was missed
/// meanwhile goes out late, once. Follows the keyring as well: when mail is set up or removed, and
/// when the keyring can be read for the first time. Main thread only.
class EmailScheduler : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isScheduled READ isScheduled NOTIFY isScheduledChanged)
public:
    /// The hour of a user who has chosen none, or midnight.
    static constexpr int defaultHour = 8;

    /// What the scheduler works with; all of it outlives the scheduler.
    struct Dependencies {
        EmailService &service;
        ResendKeyService &keys;
        Preferences &preferences;
        Clock &clock;
    };

    explicit EmailScheduler(const Dependencies &dependencies, QObject *parent = nullptr);

    /// Where the links are; null, as at first: nothing is sent. Outlives the scheduler.
    void setModelContext(ModelContext *context) { m_modelContext = context; }
    /// Whether a digest is to be sent at some later time.
    bool isScheduled() const { return m_isScheduled; }

    /// Aims at the next send, or at none when the digest is off; a digest that is on needs the
    /// keyring to be read. To be called at the start and when the user has changed the digest's
    /// preferences.
    void scheduleNextEmail();
    /// Sends the digest of today if its hour has passed and none has gone out. To be called once,
    /// at the start, after `scheduleNextEmail`.
    void checkAndSendIfNeeded();
    /// Sends now, whatever the hour, and aims at the next send. Hides what was sent if the user
    /// wants that. Does nothing while such a send is under way.
    Task<> sendScheduledEmail();
    /// The next time at which it is `hour` o'clock, later than now; where the clocks skip that hour
    /// or day, the moment after the gap. Absent when there is no such hour.
    std::optional<Instant> nextSendDate(int hour) const;

Q_SIGNALS:
    void isScheduledChanged();

private:
    /// What a send is due for, in whatever time zone. Where the clocks skip the hour, the day is
    /// that of the moment after the gap.
    struct Slot {
        QDate day;
        int hour;
        bool operator==(const Slot &) const = default;
    };

    bool isEnabled() const;
    int sendHour() const;
    Instant due(const Slot &slot) const;
    std::optional<Slot> slotAt(std::optional<Instant> date) const;
    Slot lastSlot() const;
    std::optional<Slot> nextUnfiredSlot() const;
    void aim(const std::optional<Slot> &slot);
    void wait();
    void wake();
    Task<> send(Slot slot);
    Task<> deliver(QString recipient, Slot slot);
    QByteArray occasion(const Slot &slot) const;
    void recordSent(const QList<CapturedLink> &links);

    Dependencies m_dependencies;
    ModelContext *m_modelContext = nullptr;
    std::optional<Slot> m_aim;
    std::unique_ptr<Alarm> m_timer; ///< rings when `m_aim` is due, or before to look at the clock
    QList<Slot> m_fired; ///< by this process
    bool m_isSending = false;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(EmailScheduler, bool, m_isScheduled, false,
                                         &EmailScheduler::isScheduledChanged)
    Scope m_tasks;
};
