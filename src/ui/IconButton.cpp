// SPDX-License-Identifier: MIT
#include "IconButton.h"

#include "TintedIcon.h"

IconButton::IconButton(const QString &icon, const QString &toolTip, QWidget *parent)
    : QToolButton(parent)
    , m_icon(tintedIcon(icon))
{
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    setIcon(m_icon);
    setIconSize(QSize(16, 16));
    setToolTip(toolTip);
    setAccessibleName(toolTip);
}

void IconButton::setIconShown(bool isShown)
{
    setIcon(isShown ? m_icon : QIcon());
}
