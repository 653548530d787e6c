// SPDX-License-Identifier: MIT
#pragma once

#include "SecretsModule.h"

// The operations of `SecretsModule`, by libsecret.
SecretStore::ReadResult readSecrets(const QByteArray &serviceName, const QStringList &accounts,
                                    UnlockPrompt prompt, SecretPart part);
SecretStore::Result writeSecrets(const QByteArray &serviceName, const QList<Secret> &secrets);
SecretStore::Result removeSecrets(const QByteArray &serviceName);
