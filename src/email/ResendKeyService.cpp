// SPDX-License-Identifier: MIT
#include "ResendKeyService.h"

#include "Characters.h"
#include "DebugLog.h"
#include "Utf8.h"
#include "WhiteSpace.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr int shortestKey = 20;

QString withoutSpace(const QString &text)
{
    const std::string utf8 = text.toStdString();
    const std::string_view rest = trimmed(utf8);
    return readUtf8(rest);
}

bool isEmailAddress(const QString &text)
{
    static const QRegularExpression pattern(
        uR"(^[A-Za-z0-9._%+-]+@[A-Za-z0-9.-]+\.[A-Za-z]{2,}$)"_s);
    return pattern.match(text).hasMatch();
}

/// The value of an account where there is one and it is not locked.
std::optional<QString> textOf(const SecretStore::Secrets &secrets, QLatin1StringView account)
{
    const auto value = secrets.value(account);
    return value ? std::optional(readUtf8(*value)) : std::nullopt;
}

bool isUnlocked(const SecretStore::Secrets &secrets)
{
    return std::all_of(secrets.begin(), secrets.end(),
                       [](const auto &value) { return value.has_value(); });
}

void logFault(SecretFault fault)
{
    debugLog(u"Failed to read the email configuration: " + description(fault));
}

} // namespace

std::optional<QString> configurationFault(const QString &apiKey, const QString &fromEmail)
{
    const QString key = withoutSpace(apiKey);
    const QString address = withoutSpace(fromEmail);
    if (key.isEmpty())
        return ResendKeyService::tr("API key cannot be empty");
    if (!key.startsWith(u"re_"))
        return ResendKeyService::tr("Invalid API key format. Resend keys start with 're_'");
    if (hasFewerCharacters(QStringView(key), shortestKey))
        return ResendKeyService::tr("API key is too short");
    if (address.isEmpty())
        return ResendKeyService::tr("From email address is required");
    if (!isEmailAddress(address))
        return ResendKeyService::tr("Invalid email address format");
    return std::nullopt;
}

ResendKeyService::ResendKeyService(SecretStore &secrets, QObject *parent)
    : QObject(parent)
    , m_secrets(secrets)
{
}

Task<bool> ResendKeyService::saveConfiguration(QString apiKey, QString fromEmail)
{
    const auto fault = configurationFault(apiKey, fromEmail);
    m_validationError = fault;
    if (fault)
        co_return false;

    const QString key = withoutSpace(apiKey);
    const QString address = withoutSpace(fromEmail);
    ++m_changes;
    const QList<Secret> secrets = {{apiKeyAccount, key.toUtf8()}, {emailAccount, address.toUtf8()}};
    const auto written = co_await m_secrets.write(secrets);
    if (!written)
        debugLog(u"Failed to save the email configuration: " + description(written.error()));
    m_isConfigured = true;
    m_configuredEmail = address;
    co_return true;
}

void ResendKeyService::removeConfiguration()
{
    ++m_changes;
    m_tasks.start(removeSecrets());
    m_isConfigured = false;
    m_configuredEmail = std::nullopt;
    m_validationError = std::nullopt;
}

Task<> ResendKeyService::removeSecrets()
{
    const auto removed = co_await m_secrets.removeAll();
    if (!removed)
        debugLog(u"Failed to remove the email configuration: " + description(removed.error()));
}

Task<std::optional<QString>> ResendKeyService::apiKey(UnlockPrompt prompt)
{
    const auto secrets = co_await read(prompt);
    co_return secrets ? textOf(*secrets, apiKeyAccount) : std::nullopt;
}

void ResendKeyService::refresh()
{
    connect(&m_secrets, &SecretStore::changed, this, &ResendKeyService::refreshUnlessKnown,
            Qt::UniqueConnection);
    m_tasks.start(readAgain());
}

void ResendKeyService::refreshUnlessKnown()
{
    if (!m_isKnown)
        refresh();
}

Task<> ResendKeyService::readAgain()
{
    const int changes = m_changes;
    const QStringList keyAccount = {apiKeyAccount};
    const auto key = co_await m_secrets.find(keyAccount); // its value is not needed yet
    if (!key)
        co_return logFault(key.error());
    const QStringList addressAccount = {emailAccount};
    const auto address = co_await m_secrets.read(addressAccount, UnlockPrompt::never);
    if (!address)
        co_return logFault(address.error());
    SecretStore::Secrets secrets = *key;
    secrets.insert(*address);
    learn(secrets, changes);
}

Task<std::optional<SecretStore::Secrets>> ResendKeyService::read(UnlockPrompt prompt)
{
    const int changes = m_changes;
    const QStringList accounts = {apiKeyAccount, emailAccount};
    const auto secrets = co_await m_secrets.read(accounts, prompt);
    if (!secrets) {
        logFault(secrets.error());
        co_return std::nullopt;
    }
    learn(*secrets, changes);
    co_return *secrets;
}

void ResendKeyService::learn(const SecretStore::Secrets &secrets, int changes)
{
    if (changes == m_changes)
        publish(secrets);
    if (isUnlocked(secrets) && !std::exchange(m_isKnown, true))
        Q_EMIT becameKnown();
}

void ResendKeyService::publish(const SecretStore::Secrets &secrets)
{
    // A key that has vanished under the running program shows when it is to be used.
    m_isConfigured = m_isConfigured || secrets.contains(apiKeyAccount);
    if (const auto address = textOf(secrets, emailAccount))
        m_configuredEmail = *address;
}
