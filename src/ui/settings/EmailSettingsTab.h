// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class EmailScheduler;
class Preferences;
class QTimeEdit;

class EmailSettingsTab : public QWidget
{
    Q_OBJECT
public:
    EmailSettingsTab(Preferences &preferences, EmailScheduler &scheduler,
                     QWidget *parent = nullptr);

private:
    void showSendTime();
    void chooseSendTime();

    Preferences &m_preferences;
    EmailScheduler &m_scheduler;
    QTimeEdit *m_sendTime;
};
