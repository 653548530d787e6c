// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsDependencies.h"

#include <QTabWidget>

/// The settings window.
class SettingsView : public QTabWidget
{
    Q_OBJECT
public:
    explicit SettingsView(const SettingsDependencies &with, QWidget *parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent *event) override;
};
