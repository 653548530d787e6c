// SPDX-License-Identifier: MIT
#include "ManualSend.h"

#include "EmailService.h"
#include "LinkCursor.h"
#include "Preferences.h"

ManualSend::ManualSend(const Parts &parts, QObject *parent)
    : QObject(parent)
    , m_parts(parts)
{
    connect(&m_parts.service, &EmailService::isSendingChanged, this, &ManualSend::changed);
}

bool ManualSend::isSending() const
{
    return m_isSending || m_parts.service.isSending();
}

void ManualSend::start()
{
    if (!isSending())
        m_tasks.start(send());
}

void ManualSend::markSeen()
{
    if (m_outcome) {
        m_outcome.reset();
        Q_EMIT changed();
    }
}

Task<> ManualSend::send()
{
    m_isSending = true;
    m_outcome.reset();
    Q_EMIT changed();
    const Outcome outcome = co_await deliver();
    m_outcome = outcome;
    m_isSending = false;
    Q_EMIT changed();
}

Task<ManualSend::Outcome> ManualSend::deliver()
{
    const ModelContext &context = m_parts.modelContext;
    const auto links = co_await collectVisibleLinks(context, LinkOrder::newestFirst);
    if (!links)
        co_return Unexpected{description(links.error())};
    const QString to = m_parts.preferences.string(preferenceKeys::emailAddress).value_or(QString());
    const SendResult sent = co_await m_parts.service.sendDigest(*links, to);
    if (!sent)
        co_return Unexpected{description(sent.error())};
    co_return Outcome();
}
