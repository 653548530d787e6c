// SPDX-License-Identifier: MIT
#pragma once

#include "settings/HistoryModel.h"
#include "settings/SettingsParts.h"

#include <QWidget>

class QLabel;

class StorageSettingsTab : public QWidget
{
    Q_OBJECT
public:
    explicit StorageSettingsTab(const SettingsParts &parts, QWidget *parent = nullptr);

private:
    void confirmClearing();
    void refresh();

    HistoryModel m_history;
    QLabel *m_count;
};
