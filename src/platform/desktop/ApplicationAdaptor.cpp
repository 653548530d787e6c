// SPDX-License-Identifier: MIT
#include "desktop/ApplicationAdaptor.h"

void ApplicationAdaptor::Activate(const QVariantMap &platformData)
{
    // Qt hands the token to the window that is shown next.
    if (const QString token = platformData.value(QStringLiteral("activation-token")).toString();
        !token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
    Q_EMIT activationRequested();
}
