// SPDX-License-Identifier: MIT
#include "PanelPlacement.h"

#include <algorithm>

QRect panelPlacement(QSize size, const std::optional<QRect> &trayIcon, QPoint cursor,
                     const QRect &screen)
{
    const QRect anchor = trayIcon.value_or(QRect(cursor, QSize(1, 1)));
    const bool isAtTop = anchor.center().y() < screen.center().y();
    const int room = isAtTop ? screen.bottom() - anchor.bottom() : anchor.top() - screen.top();
    size = size.boundedTo(screen.size());
    if (trayIcon)
        size.setHeight(std::min(size.height(), room));
    const int left = anchor.center().x() - size.width() / 2;
    const int top = isAtTop ? anchor.bottom() + 1 : anchor.top() - size.height();
    const auto clamped = [](int wanted, int least, int most) {
        return std::max(least, std::min(wanted, most));
    };
    return {QPoint(clamped(left, screen.left(), screen.right() + 1 - size.width()),
                   clamped(top, screen.top(), screen.bottom() + 1 - size.height())),
            size};
}
