// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsParts.h"

#include <QWidget>

class GeneralSettingsTab : public QWidget
{
    Q_OBJECT
public:
    explicit GeneralSettingsTab(const SettingsParts &parts, QWidget *parent = nullptr);
};
