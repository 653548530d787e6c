// SPDX-License-Identifier: MIT
#pragma once

#include "settings/ExcludedDomainsModel.h"

#include <QScrollArea>

class ExcludedDomainsTab : public QScrollArea
{
    Q_OBJECT
public:
    ExcludedDomainsTab(ModelContext &context, Clock &clock, QWidget *parent = nullptr);

private:
    ExcludedDomainsModel m_model;
};
