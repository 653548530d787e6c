#include "IconButton.h"

#include "TintedIcon.h"

IconButton::IconButton(const QString &icon, const QString &toolTip, QWidget *parent)
    : QToolButton(parent)
{
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    setIcon(tintedIcon(icon));
    setIconSize(QSize(16, 16));
    setToolTip(toolTip);
    setAccessibleName(toolTip);
}
