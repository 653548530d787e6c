// SPDX-License-Identifier: MIT
#pragma once

#include "settings/EmailSettingsViewModel.h"
#include "settings/ProviderPages.h"

#include <QWidget>

class Caption;
class EmailScheduler;
class Preferences;
class QPushButton;
class QVBoxLayout;
class Spinner;
class StatusLine;

class EmailTabContent : public QWidget
{
    Q_OBJECT
public:
    struct Dependencies {
        ModelContext &modelContext;
        Preferences &preferences;
        ResendKeyService &keys;
        ManualSend &manualSend;
        EmailScheduler &scheduler;
        ProviderPages pages;
    };

    explicit EmailTabContent(const Dependencies &dependencies, QWidget *parent = nullptr);
    ~EmailTabContent() override;

protected:
    void hideEvent(QHideEvent *event) override;

private:
    QWidget *makeSetupCard();
    QWidget *makeSender();
    QLayout *makeSending();
    void showSetup();
    void confirmRemoval();
    void refresh();

    const ProviderPages m_pages;
    EmailSettingsViewModel m_model;
    Caption *m_senderText = nullptr; // before what makes it
    QWidget *m_setupCard;
    QWidget *m_sender;
    Caption *m_count = nullptr;
    QPushButton *m_send = nullptr;
    Spinner *m_spinner = nullptr;
    StatusLine *m_outcome = nullptr;
};
