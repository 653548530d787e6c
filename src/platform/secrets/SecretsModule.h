// SPDX-License-Identifier: MIT
#pragma once

#include "Module.h"
#include "SecretStore.h"

enum class SecretPart { presence, value };

/// What the module with libsecret offers: what `SecretStore` does, for the items whose attribute
/// "service" is `serviceName`. One at a time, not on the main thread: each waits for the service,
/// and for the user while one is asked.
struct SecretsModule : ModuleOffer {
    static constexpr auto name = "secrets";

    SecretStore::ReadResult (*read)(const QByteArray &serviceName, const QStringList &accounts,
                                    UnlockPrompt prompt, SecretPart part);
    SecretStore::Result (*write)(const QByteArray &serviceName, const QList<Secret> &secrets);
    SecretStore::Result (*removeAll)(const QByteArray &serviceName);
};
