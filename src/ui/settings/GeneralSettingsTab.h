// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <functional>

class Preferences;

class GeneralSettingsTab : public QWidget
{
    Q_OBJECT
public:
    GeneralSettingsTab(Preferences &preferences, const std::function<void(bool)> &setLaunchAtLogin,
                       QWidget *parent = nullptr);
};
