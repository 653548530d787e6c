// SPDX-License-Identifier: MIT
#pragma once

#include "settings/ExcludedDomainsModel.h"

#include <QWidget>

class ExcludedTabContent : public QWidget
{
    Q_OBJECT
public:
    ExcludedTabContent(ModelContext &context, Clock &clock, QWidget *parent = nullptr);

private:
    ExcludedDomainsModel m_model;
};
