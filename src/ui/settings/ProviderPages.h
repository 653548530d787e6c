// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsParts.h"

#include <QString>

class QWidget;

/// The mail provider's pages, under the names that the information file gives them.
namespace providerPages
{
inline constexpr QLatin1StringView apiKeys("ProviderApiKeys");
inline constexpr QLatin1StringView documentation("ProviderDocumentation");
} // namespace providerPages

/// A link that opens `page` in the browser; null when the information file does not name it.
QWidget *providerLink(const SettingsParts &parts, QLatin1StringView page, const QString &label);
