// SPDX-License-Identifier: MIT
#pragma once

#include "settings/HistoryModel.h"
#include "settings/SettingsParts.h"

#include <QWidget>

class QLabel;

class DataTabContent : public QWidget
{
    Q_OBJECT
public:
    explicit DataTabContent(const SettingsParts &parts, QWidget *parent = nullptr);

private:
    QWidget *makeOwnContent();
    void showExport();
    void leaveExport();
    void confirmClearing();
    void refresh();

    const SettingsParts m_parts;
    HistoryModel m_history;
    QLabel *m_count = nullptr;
    QWidget *m_ownContent;
    QWidget *m_export = nullptr; ///< the export screen while it is shown
};
