// SPDX-License-Identifier: MIT
#pragma once

#include "settings/HistoryModel.h"

#include <QWidget>

class ExportService;
class Preferences;
class QLabel;

class DataTabContent : public QWidget
{
    Q_OBJECT
public:
    DataTabContent(ModelContext &context, Preferences &preferences, ExportService &exports,
                   QWidget *parent = nullptr);

private:
    QWidget *makeOwnContent(Preferences &preferences);
    void showExport();
    void leaveExport();
    void confirmClearing();
    void refresh();

    ExportService &m_exports;
    HistoryModel m_history;
    QLabel *m_count = nullptr;
    QWidget *m_ownContent;
    QWidget *m_export = nullptr; ///< the export screen while it is shown
};
