// SPDX-License-Identifier: MIT
#include "settings/EmailSettingsTab.h"

#include "EmailScheduler.h"
#include "FormWidgets.h"
#include "Preferences.h"
#include "settings/PreferenceControls.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QTimeEdit>

using namespace Qt::StringLiterals;

EmailSettingsTab::EmailSettingsTab(Preferences &preferences, EmailScheduler &scheduler,
                                   QWidget *parent)
    : QWidget(parent)
    , m_preferences(preferences)
    , m_scheduler(scheduler)
    , m_sendTime(new QTimeEdit)
{
    const auto reschedule = [&scheduler](const auto &) { scheduler.scheduleNextEmail(); };
    m_sendTime->setLayoutDirection(Qt::LeftToRight); // Qt would turn 08:00 into 00:08
    m_sendTime->setDisplayFormat(u"HH:mm"_s);
    showSendTime();
    connect(m_sendTime, &QTimeEdit::editingFinished, this, &EmailSettingsTab::chooseSendTime);
    connect(&m_preferences, &Preferences::changed, this, &EmailSettingsTab::showSendTime);

    auto *const form = makeForm();
    addRow(form, tr("Email Address"),
           preferenceField(preferences, preferenceKeys::emailAddress, tr("you@example.com"),
                           reschedule));
    addRow(form, tr("Send Time"), m_sendTime);
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(10);
    column->addWidget(preferenceToggle(preferences, preferenceKeys::emailDigestEnabled, false,
                                       tr("Enable Daily Email Digest"), reschedule));
    column->addLayout(form);
    column->addStretch();
}

void EmailSettingsTab::showSendTime()
{
    const int hour =
        m_preferences.integer(preferenceKeys::emailSendHour).value_or(EmailScheduler::defaultHour);
    if (const QTime time(hour, 0); time.isValid())
        m_sendTime->setTime(time);
}

/// The digest goes out on the hour, so the minutes that were chosen go back to none: both screens
/// then show the time at which it comes.
void EmailSettingsTab::chooseSendTime()
{
    const int hour = m_sendTime->time().hour();
    const auto stored = m_preferences.integer(preferenceKeys::emailSendHour);
    if (hour != stored.value_or(EmailScheduler::defaultHour)) {
        m_preferences.set(preferenceKeys::emailSendHour, hour);
        m_scheduler.scheduleNextEmail();
    }
    showSendTime();
}
