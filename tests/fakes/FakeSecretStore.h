// SPDX-License-Identifier: MIT
#pragma once

#include "SecretStore.h"
#include "SystemClock.h"

/// A keyring in memory that answers one loop turn later.
class FakeSecretStore final : public SecretStore
{
public:
    QHash<QString, QByteArray> contents;
    std::optional<SecretFault> fault; ///< what every operation ends with, if anything
    bool isLocked = false;
    bool userUnlocks = true; ///< when asked
    int prompts = 0;
    QStringList accountsRead; ///< whose values were given out

    /// As the keyring that comes up, or is unlocked by another program.
    void change()
    {
        fault.reset();
        isLocked = false;
        Q_EMIT changed();
    }

    Task<ReadResult> read(QStringList accounts, UnlockPrompt prompt) override;
    Task<ReadResult> find(QStringList accounts) override;
    Task<Result> write(QList<Secret> secrets) override;
    Task<Result> removeAll() override;

private:
    Result unlock();

    SystemClock m_clock;
};
