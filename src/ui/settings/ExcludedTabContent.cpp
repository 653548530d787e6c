// SPDX-License-Identifier: MIT
#include "settings/ExcludedTabContent.h"

#include "settings/ExcludedDomainsEditor.h"

#include <QVBoxLayout>

ExcludedTabContent::ExcludedTabContent(const SettingsParts &parts, QWidget *parent)
    : QWidget(parent)
    , m_model(parts.modelContext, parts.clock)
{
    auto *const column = new QVBoxLayout(this);
    column->addWidget(new ExcludedDomainsEditor(
        m_model, tr("URLs from these domains won't be captured."), tr("example.com")));
    column->addStretch();
}
