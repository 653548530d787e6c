// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>

#include <optional>

/// Where a panel of `size` opens: centred below the tray icon, or above it where the icon is in the
/// lower half of the screen; at the cursor where the tray does not tell. Always inside `screen`,
/// and lower where it would cover the icon, with which it is closed.
QRect panelPlacement(QSize size, const std::optional<QRect> &trayIcon, QPoint cursor,
                     const QRect &screen);
