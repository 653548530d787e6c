// SPDX-License-Identifier: MIT
#include "settings/EmailSettingsViewModel.h"

#include "ManualSend.h"
#include "ModelContext.h"
#include "ResendKeyService.h"

EmailSettingsViewModel::EmailSettingsViewModel(ModelContext &context, ResendKeyService &keys,
                                               ManualSend &manualSend, QObject *parent)
    : QObject(parent)
    , m_context(context)
    , m_keys(keys)
    , m_manualSend(manualSend)
{
    const auto announce = [this] { Q_EMIT changed(); };
    connect(&m_keys, &ResendKeyService::isConfiguredChanged, this, announce);
    connect(&m_keys, &ResendKeyService::configuredEmailChanged, this, announce);
    connect(&m_keys, &ResendKeyService::validationErrorChanged, this, announce);
    connect(&m_manualSend, &ManualSend::changed, this, announce);
    connect(&m_context, &ModelContext::changed, this, announce);
}

bool EmailSettingsViewModel::isConfigured() const
{
    return m_keys.isConfigured();
}

QString EmailSettingsViewModel::senderText() const
{
    return tr("Sending from: ") + m_keys.configuredEmail().value_or(tr("Unknown"));
}

QString EmailSettingsViewModel::countText() const
{
    return tr("%1 links").arg(m_context.counts().visible);
}

std::optional<QString> EmailSettingsViewModel::validationError() const
{
    return m_keys.validationError();
}

bool EmailSettingsViewModel::isSending() const
{
    return m_manualSend.isSending();
}

std::optional<QString> EmailSettingsViewModel::sendError() const
{
    const auto &outcome = m_manualSend.outcome();
    return outcome && !*outcome ? std::optional(outcome->error()) : std::nullopt;
}

bool EmailSettingsViewModel::sendSuccess() const
{
    const auto &outcome = m_manualSend.outcome();
    return outcome && *outcome;
}

void EmailSettingsViewModel::sendNow()
{
    m_manualSend.start();
}

void EmailSettingsViewModel::leave()
{
    m_manualSend.markSeen();
}

void EmailSettingsViewModel::save(const QString &apiKey, const QString &fromEmail)
{
    m_tasks.start(saveConfiguration(apiKey, fromEmail));
}

Task<> EmailSettingsViewModel::saveConfiguration(QString apiKey, QString fromEmail)
{
    const bool isSaved = co_await m_keys.saveConfiguration(apiKey, fromEmail);
    if (isSaved)
        Q_EMIT saved();
}

void EmailSettingsViewModel::removeConfiguration()
{
    m_keys.removeConfiguration();
}

void EmailSettingsViewModel::refresh()
{
    m_keys.refresh();
}
