// SPDX-License-Identifier: MIT
#include "settings/ProviderPages.h"

#include "AppInfo.h"
#include "UrlOpener.h"

#include <QPushButton>

QWidget *providerLink(const SettingsParts &parts, QLatin1StringView page, const QString &label)
{
    const auto address = parts.info.value(page);
    if (!address)
        return nullptr;
    auto *const link = new QPushButton(label);
    link->setFlat(true);
    link->setAutoDefault(false);
    link->setCursor(Qt::PointingHandCursor);
    QFont underlined = link->font();
    underlined.setUnderline(true);
    link->setFont(underlined);
    QPalette palette;
    palette.setColor(QPalette::ButtonText, link->palette().color(QPalette::Link));
    link->setPalette(palette);
    link->setToolTip(*address);
    QObject::connect(link, &QPushButton::clicked, link,
                     [&opener = parts.urlOpener, url = *address] { opener.open(url); });
    return link;
}
