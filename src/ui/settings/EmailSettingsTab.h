// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsParts.h"

#include <QWidget>

class QTimeEdit;

class EmailSettingsTab : public QWidget
{
    Q_OBJECT
public:
    explicit EmailSettingsTab(const SettingsParts &parts, QWidget *parent = nullptr);

private:
    void showSendTime();
    void chooseSendTime();

    const SettingsParts m_parts;
    QTimeEdit *m_sendTime;
};
