// SPDX-License-Identifier: MIT
#pragma once

#include "SecretStore.h"
#include "async/Scope.h"

#include <QObject>
#include <QProperty>

/// What is wrong with what the user has typed, in words for the user; absent when it can be saved.
/// Both texts are looked at without white space around them.
std::optional<QString> configurationFault(const QString &apiKey, const QString &fromEmail);

/// The mail provider's API key and the sender address, kept in the keyring and nowhere else. The
/// keyring answers late, and may be absent or locked at first: it is looked at again whenever it
/// has changed, until all of it could be read. Main thread only.
class ResendKeyService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isConfigured READ isConfigured NOTIFY isConfiguredChanged)
    Q_PROPERTY(
        std::optional<QString> validationError READ validationError NOTIFY validationErrorChanged)
    Q_PROPERTY(
        std::optional<QString> configuredEmail READ configuredEmail NOTIFY configuredEmailChanged)
public:
    static constexpr QLatin1StringView serviceName{"app.strandloom"};
    static constexpr QLatin1StringView apiKeyAccount{"resend_api_key"};
    static constexpr QLatin1StringView emailAccount{"resend_from_email"};

    /// Reads nothing before `refresh`: looking at the keyring may start it, which only those need
    /// who use mail. `secrets` outlives the service.
    explicit ResendKeyService(SecretStore &secrets, QObject *parent = nullptr);

    /// Whether the keyring could be read, now or earlier.
    bool isKnown() const { return m_isKnown; }
    /// Whether an API key is stored, be it locked.
    bool isConfigured() const { return m_isConfigured; }
    /// The message of the last save that was refused; absent after one that was not.
    std::optional<QString> validationError() const { return m_validationError; }
    /// The stored sender address; absent when there is none, or while it is locked.
    std::optional<QString> configuredEmail() const { return m_configuredEmail; }

    /// Checks, stores and publishes; false when the check fails. A keyring that refuses is only
    /// logged: sending will then find no key.
    Task<bool> saveConfiguration(QString apiKey, QString fromEmail);
    void removeConfiguration();
    /// The stored key; absent when there is none or it cannot be read. Reads the sender address
    /// along with it.
    Task<std::optional<QString>> apiKey(UnlockPrompt prompt);
    /// Begins to read, or reads again, without asking the user for anything: the keyring may have
    /// been unlocked, or come up, meanwhile. The key itself stays there until it is asked for.
    void refresh();

Q_SIGNALS:
    void isConfiguredChanged();
    void validationErrorChanged();
    void configuredEmailChanged();
    /// Once, when the keyring could be read for the first time.
    void becameKnown();

private:
    Task<std::optional<SecretStore::Secrets>> read(UnlockPrompt prompt);
    void refreshUnlessKnown();
    Task<> readAgain();
    Task<> removeSecrets();
    /// What was asked for after `changes` saves and removals.
    void learn(const SecretStore::Secrets &secrets, int changes);
    void publish(const SecretStore::Secrets &secrets);

    SecretStore &m_secrets;
    int m_changes = 0; ///< saves and removals: what was read before the last of them is outdated
    bool m_isKnown = false;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ResendKeyService, bool, m_isConfigured, false,
                                         &ResendKeyService::isConfiguredChanged)
    Q_OBJECT_BINDABLE_PROPERTY(ResendKeyService, std::optional<QString>, m_validationError,
                               &ResendKeyService::validationErrorChanged)
    Q_OBJECT_BINDABLE_PROPERTY(ResendKeyService, std::optional<QString>, m_configuredEmail,
                               &ResendKeyService::configuredEmailChanged)
    Scope m_tasks;
};
