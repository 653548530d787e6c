// SPDX-License-Identifier: MIT
#pragma once

#include "settings/EmailSettingsViewModel.h"

#include <QWidget>

class Caption;
class QPushButton;
class QVBoxLayout;
class Spinner;
class StatusLine;

class EmailTabContent : public QWidget
{
    Q_OBJECT
public:
    explicit EmailTabContent(const SettingsParts &parts, QWidget *parent = nullptr);
    ~EmailTabContent() override;

protected:
    void hideEvent(QHideEvent *event) override;

private:
    QWidget *makeSetupCard();
    QWidget *makeSender();
    void addPreferences(QVBoxLayout *column);
    QLayout *makeSending();
    void showSetup();
    void confirmRemoval();
    void refresh();

    const SettingsParts m_parts;
    EmailSettingsViewModel m_model;
    Caption *m_senderText = nullptr; // before what makes it
    QWidget *m_setupCard;
    QWidget *m_sender;
    Caption *m_count = nullptr;
    QPushButton *m_send = nullptr;
    Spinner *m_spinner = nullptr;
    StatusLine *m_outcome = nullptr;
};
