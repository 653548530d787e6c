// SPDX-License-Identifier: MIT
#include "SecretStore.h"

using namespace Qt::StringLiterals;

QString description(SecretFault fault)
{
    switch (fault) {
    case SecretFault::locked:
        return u"The keyring is locked"_s;
    case SecretFault::unavailable:
        return u"There is no secret service"_s;
    case SecretFault::timedOut:
        return u"The secret service does not answer"_s;
    case SecretFault::notLoaded:
        return u"A part of Strandloom is not there"_s;
    }
    Q_UNREACHABLE();
}
