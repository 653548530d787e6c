// SPDX-License-Identifier: MIT
#include "settings/EmailSettingsViewModel.h"

#include "ManualSend.h"
#include "ModelContext.h"
#include "ResendKeyService.h"

EmailSettingsViewModel::EmailSettingsViewModel(const SettingsParts &parts, QObject *parent)
    : QObject(parent)
    , m_parts(parts)
{
    const auto announce = [this] { Q_EMIT changed(); };
    connect(&m_parts.keys, &ResendKeyService::isConfiguredChanged, this, announce);
    connect(&m_parts.keys, &ResendKeyService::configuredEmailChanged, this, announce);
    connect(&m_parts.keys, &ResendKeyService::validationErrorChanged, this, announce);
    connect(&m_parts.manualSend, &ManualSend::changed, this, announce);
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

bool EmailSettingsViewModel::isSending() const
{
    return m_parts.manualSend.isSending();
}

std::optional<QString> EmailSettingsViewModel::sendError() const
{
    const auto &outcome = m_parts.manualSend.outcome();
    return outcome && !*outcome ? std::optional(outcome->error()) : std::nullopt;
}

bool EmailSettingsViewModel::sendSuccess() const
{
    const auto &outcome = m_parts.manualSend.outcome();
    return outcome && *outcome;
}

void EmailSettingsViewModel::sendNow()
{
    m_parts.manualSend.start();
}

void EmailSettingsViewModel::leave()
{
    m_parts.manualSend.markSeen();
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
