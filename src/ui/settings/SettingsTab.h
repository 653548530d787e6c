// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <array>

/// The tabs of the settings within the panel, in their order.
enum class SettingsTab { general, email, excluded, data };
inline constexpr std::array settingsTabs{SettingsTab::general, SettingsTab::email,
                                         SettingsTab::excluded, SettingsTab::data};

QString label(SettingsTab tab);
