// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <functional>

class Preferences;
class UpdaterManager;

class GeneralTabContent : public QWidget
{
    Q_OBJECT
public:
    GeneralTabContent(Preferences &preferences, UpdaterManager &updates,
                      const std::function<void(bool)> &setLaunchAtLogin, QWidget *parent = nullptr);
};
