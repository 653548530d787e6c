// SPDX-License-Identifier: MIT
#include "settings/ExcludedTabContent.h"

#include "settings/ExcludedDomainsEditor.h"

#include <QVBoxLayout>

ExcludedTabContent::ExcludedTabContent(ModelContext &context, Clock &clock, QWidget *parent)
    : QWidget(parent)
    , m_model(context, clock)
{
    auto *const column = new QVBoxLayout(this);
    column->addWidget(new ExcludedDomainsEditor(
        m_model, tr("URLs from these domains won't be captured."), tr("example.com")));
    column->addStretch();
}
