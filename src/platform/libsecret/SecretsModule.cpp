// SPDX-License-Identifier: MIT
#include "SecretsModule.h"

#include "Keyring.h"

extern "C" Q_DECL_EXPORT const ModuleOffer *strandloomModule()
{
    static const SecretsModule module{{}, readSecrets, writeSecrets, removeSecrets};
    return &module;
}
