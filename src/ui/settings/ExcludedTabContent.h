// SPDX-License-Identifier: MIT
#pragma once

#include "settings/ExcludedDomainsModel.h"
#include "settings/SettingsParts.h"

#include <QWidget>

class ExcludedTabContent : public QWidget
{
    Q_OBJECT
public:
    explicit ExcludedTabContent(const SettingsParts &parts, QWidget *parent = nullptr);

private:
    ExcludedDomainsModel m_model;
};
