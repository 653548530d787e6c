// SPDX-License-Identifier: MIT
#include "settings/EmailSettingsViewModel.h"

#include "EmailService.h"
#include "LinkCursor.h"
#include "Preferences.h"
#include "ResendKeyService.h"

EmailSettingsViewModel::EmailSettingsViewModel(const SettingsParts &parts, QObject *parent)
    : QObject(parent)
    , m_parts(parts)
{
    const auto announce = [this] { Q_EMIT changed(); };
    connect(&m_parts.keys, &ResendKeyService::isConfiguredChanged, this, announce);
    connect(&m_parts.keys, &ResendKeyService::configuredEmailChanged, this, announce);
    connect(&m_parts.keys, &ResendKeyService::validationErrorChanged, this, announce);
    connect(&m_parts.modelContext, &ModelContext::changed, this, announce);
}

bool EmailSettingsViewModel::isConfigured() const
{
    return m_parts.keys.isConfigured();
}

QString EmailSettingsViewModel::senderText() const
{
    return tr("Sending from: ") + m_parts.keys.configuredEmail().value_or(tr("Unknown"));
}

QString EmailSettingsViewModel::countText() const
{
    return tr("%1 links").arg(m_parts.modelContext.counts().visible);
}

std::optional<QString> EmailSettingsViewModel::validationError() const
{
    return m_parts.keys.validationError();
}

void EmailSettingsViewModel::sendNow()
{
    if (!m_isSending)
        m_tasks.start(send());
}

Task<> EmailSettingsViewModel::send()
{
    m_isSending = true;
    m_sendError = std::nullopt;
    m_sendSuccess = false;
    Q_EMIT changed();
    m_sendError = co_await deliver();
    m_sendSuccess = !m_sendError;
    m_isSending = false;
    Q_EMIT changed();
}

/// What went wrong; absent when nothing did.
Task<std::optional<QString>> EmailSettingsViewModel::deliver()
{
    const ModelContext &context = m_parts.modelContext;
    const auto links = co_await collectVisibleLinks(context, LinkOrder::newestFirst);
    if (!links)
        co_return description(links.error());
    const QString to = m_parts.preferences.string(preferenceKeys::emailAddress).value_or(QString());
    const SendResult sent = co_await m_parts.email.sendDigest(*links, to);
    co_return sent ? std::nullopt : std::optional(description(sent.error()));
}

void EmailSettingsViewModel::save(const QString &apiKey, const QString &fromEmail)
{
    m_tasks.start(saveConfiguration(apiKey, fromEmail));
}

Task<> EmailSettingsViewModel::saveConfiguration(QString apiKey, QString fromEmail)
{
    const bool isSaved = co_await m_parts.keys.saveConfiguration(apiKey, fromEmail);
    if (isSaved)
        Q_EMIT saved();
}

void EmailSettingsViewModel::removeConfiguration()
{
    m_parts.keys.removeConfiguration();
}

void EmailSettingsViewModel::refresh()
{
    m_parts.keys.refresh();
}
