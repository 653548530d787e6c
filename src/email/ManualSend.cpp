// SPDX-License-Identifier: MIT
#include "ManualSend.h"

#include "EmailService.h"
#include "LinkCursor.h"
#include "Preferences.h"

ManualSend::ManualSend(const Dependencies &dependencies, QObject *parent)
    : QObject(parent)
    , m_dependencies(dependencies)
{
    connect(&m_dependencies.service, &EmailService::isSendingChanged, this, &ManualSend::changed);
}

bool ManualSend::isSending() const
{
    return m_isSending || m_dependencies.service.isSending();
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
    const ModelContext &context = m_dependencies.modelContext;
    const auto links = co_await collectVisibleLinks(context, LinkOrder::newestFirst);
    if (!links)
        co_return Unexpected{description(links.error())};
    const QString to =
        m_dependencies.preferences.string(preferenceKeys::emailAddress).value_or(QString());
    const SendResult sent = co_await m_dependencies.service.sendDigest(*links, to);
    if (!sent)
        co_return Unexpected{description(sent.error())};
    co_return Outcome();
}
