// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "async/Task.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>

#include <optional>

/// Why secrets could not be read, kept or removed.
enum class SecretFault {
    locked, ///< and the user did not unlock them
    unavailable, ///< no secret service, no bus, or the service gave up half-way
    timedOut, ///< the service does not answer
    notLoaded, ///< the part of the program that does it
};

/// The fault as one English sentence without a full stop.
QString description(SecretFault fault);

/// Whether the user may be asked to unlock. Only where an act of the user's own leads there.
enum class UnlockPrompt { never, allowed };

struct Secret {
    QString account;
    QByteArray value;
};

/// Secrets of this program in the user's keyring, by account name. Operations run one after
/// another, in the order in which they were begun. Main thread only.
class SecretStore : public QObject
{
    Q_OBJECT
public:
    /// What is there: an account that has no secret is missing, the value of one that stays locked
    /// is absent.
    using Secrets = QHash<QString, std::optional<QByteArray>>;
    using ReadResult = Expected<Secrets, SecretFault>;
    using Result = Expected<void, SecretFault>;

    /// What stays locked is told apart in the result; when nothing is found because all is locked,
    /// that is the fault.
    virtual Task<ReadResult> read(QStringList accounts, UnlockPrompt prompt) = 0;
    /// Reads without a prompt which accounts have secrets, and leaves those in the keyring: each
    /// value is empty, or absent while it is locked.
    virtual Task<ReadResult> find(QStringList accounts) = 0;
    /// Replaces what the accounts have; may ask the user to unlock. What fails half-way may have
    /// kept the first of them.
    virtual Task<Result> write(QList<Secret> secrets) = 0;
    /// Removes the secrets of all accounts; may ask the user to unlock. Nothing there is success.
    virtual Task<Result> removeAll() = 0;

Q_SIGNALS:
    /// There may be more to read than before: the keyring has come up or was unlocked.
    void changed();
};
