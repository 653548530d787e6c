// SPDX-License-Identifier: MIT
#pragma once

#include <QToolButton>

/// A plain button that shows one of the program's icons; its tooltip is also its accessible name.
class IconButton : public QToolButton
{
    Q_OBJECT
public:
    IconButton(const QString &icon, const QString &toolTip, QWidget *parent = nullptr);

    /// Without its icon the button keeps its place and its size.
    void setIconShown(bool isShown);

private:
    QIcon m_icon;
};
