// SPDX-License-Identifier: MIT
#pragma once

#include "settings/ExcludedDomainsModel.h"
#include "settings/SettingsParts.h"

#include <QScrollArea>

class ExcludedDomainsTab : public QScrollArea
{
    Q_OBJECT
public:
    explicit ExcludedDomainsTab(const SettingsParts &parts, QWidget *parent = nullptr);

private:
    ExcludedDomainsModel m_model;
};
