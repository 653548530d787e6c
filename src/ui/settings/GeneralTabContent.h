// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsParts.h"

#include <QWidget>

class GeneralTabContent : public QWidget
{
    Q_OBJECT
public:
    explicit GeneralTabContent(const SettingsParts &parts, QWidget *parent = nullptr);
};
