// SPDX-License-Identifier: MIT
#include "settings/ProviderPages.h"

#include "AppInfo.h"
#include "FormWidgets.h"
#include "UrlOpener.h"

#include <QPushButton>

QWidget *ProviderPages::link(QLatin1StringView page, const QString &label) const
{
    const auto address = info.value(page);
    if (!address)
        return nullptr;
    QPushButton *const button = linkButton(label);
    button->setToolTip(*address);
    QObject::connect(button, &QPushButton::clicked, button,
                     [&opener = opener, url = *address] { opener.open(url); });
    return button;
}
