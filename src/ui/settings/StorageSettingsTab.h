// SPDX-License-Identifier: MIT
#pragma once

#include "settings/HistoryModel.h"

#include <QWidget>

class Preferences;
class QLabel;

class StorageSettingsTab : public QWidget
{
    Q_OBJECT
public:
    StorageSettingsTab(ModelContext &context, Preferences &preferences, QWidget *parent = nullptr);

private:
    void confirmClearing();
    void refresh();

    HistoryModel m_history;
    QLabel *m_count;
};
