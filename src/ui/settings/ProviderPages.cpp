// SPDX-License-Identifier: MIT
#include "settings/ProviderPages.h"

#include "AppInfo.h"
#include "UrlOpener.h"

#include <QLabel>

using namespace Qt::StringLiterals;

QWidget *providerLink(const SettingsParts &parts, QLatin1StringView page, const QString &label)
{
    const auto address = parts.info.value(page);
    if (!address)
        return nullptr;
    auto *const link =
        new QLabel(u"<a href=\"%1\">%2</a>"_s.arg(address->toHtmlEscaped(), label.toHtmlEscaped()));
    link->setTextInteractionFlags(Qt::TextBrowserInteraction);
    link->setAccessibleName(label);
    link->setToolTip(*address);
    QObject::connect(link, &QLabel::linkActivated, link,
                     [&opener = parts.urlOpener](const QString &url) { opener.open(url); });
    return link;
}
