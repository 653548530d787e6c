// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class AppInfo;
class QWidget;
class UrlOpener;

/// The mail provider's pages, under the names that the information file gives them.
struct ProviderPages {
    const AppInfo &info;
    UrlOpener &opener;

    static constexpr QLatin1StringView apiKeys{"ProviderApiKeys"};
    static constexpr QLatin1StringView documentation{"ProviderDocumentation"};

    /// A link that opens `page` in the browser; null when the information file does not name it.
    QWidget *link(QLatin1StringView page, const QString &label) const;
};
