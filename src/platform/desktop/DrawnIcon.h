// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QIcon>

#include <optional>

/// The SVG `file` in a picture of `size`, all of it in `color` where there is one.
QPixmap drawnPixmap(const QString &file, const QSize &size, std::optional<QColor> color);

/// The same as an icon that is drawn when it is shown, without a look at icon themes. A tray that
/// takes icons by their names is told `themeName`.
QIcon drawnIcon(const QString &file, std::optional<QColor> color = {},
                const QString &themeName = {});
