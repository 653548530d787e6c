// SPDX-License-Identifier: MIT
#include "settings/ProviderPages.h"

#include "AppInfo.h"
#include "FormWidgets.h"
#include "UrlOpener.h"

#include <QPushButton>

QWidget *providerLink(const SettingsParts &parts, QLatin1StringView page, const QString &label)
{
    const auto address = parts.info.value(page);
    if (!address)
        return nullptr;
    QPushButton *const link = linkButton(label);
    link->setToolTip(*address);
    QObject::connect(link, &QPushButton::clicked, link,
                     [&opener = parts.urlOpener, url = *address] { opener.open(url); });
    return link;
}
