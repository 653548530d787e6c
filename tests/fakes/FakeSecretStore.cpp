// SPDX-License-Identifier: MIT
#include "FakeSecretStore.h"

using namespace std::chrono_literals;

Task<SecretStore::ReadResult> FakeSecretStore::read(QStringList accounts, UnlockPrompt prompt)
{
    Sleep pause(m_clock, 0ms);
    co_await pause;
    if (fault)
        co_return Unexpected{*fault};
    if (prompt == UnlockPrompt::allowed)
        (void)unlock();
    accountsRead += accounts;
    Secrets secrets;
    for (const QString &account : accounts) {
        if (contents.contains(account))
            secrets.insert(account, isLocked ? std::nullopt : std::optional(contents[account]));
    }
    co_return secrets;
}

Task<SecretStore::ReadResult> FakeSecretStore::find(QStringList accounts)
{
    Sleep pause(m_clock, 0ms);
    co_await pause;
    if (fault)
        co_return Unexpected{*fault};
    Secrets secrets;
    for (const QString &account : accounts) {
        if (contents.contains(account))
            secrets.insert(account, isLocked ? std::nullopt : std::optional(QByteArray()));
    }
    co_return secrets;
}

Task<SecretStore::Result> FakeSecretStore::write(QList<Secret> secrets)
{
    Sleep pause(m_clock, 0ms);
    co_await pause;
    const Result unlocked = unlock();
    if (!unlocked)
        co_return unlocked;
    for (const Secret &secret : secrets)
        contents.insert(secret.account, secret.value);
    co_return Result();
}

Task<SecretStore::Result> FakeSecretStore::removeAll()
{
    Sleep pause(m_clock, 0ms);
    co_await pause;
    const Result unlocked = unlock();
    if (unlocked)
        contents.clear();
    co_return unlocked;
}

SecretStore::Result FakeSecretStore::unlock()
{
    if (fault)
        return Unexpected{*fault};
    if (!isLocked)
        return {};
    ++prompts;
    isLocked = !userUnlocks;
    if (isLocked)
        return Unexpected{SecretFault::locked};
    return {};
}
