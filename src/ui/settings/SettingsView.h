// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsParts.h"

#include <QTabWidget>

/// The settings window.
class SettingsView : public QTabWidget
{
    Q_OBJECT
public:
    explicit SettingsView(const SettingsParts &parts, QWidget *parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent *event) override;
};
