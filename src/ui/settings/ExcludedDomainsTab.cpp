// SPDX-License-Identifier: MIT
#include "settings/ExcludedDomainsTab.h"

#include "settings/ExcludedDomainsEditor.h"

#include <QVBoxLayout>

ExcludedDomainsTab::ExcludedDomainsTab(ModelContext &context, Clock &clock, QWidget *parent)
    : QScrollArea(parent)
    , m_model(context, clock)
{
    auto *const content = new QWidget;
    auto *const column = new QVBoxLayout(content);
    column->setContentsMargins(16, 16, 16, 16);
    column->addWidget(new ExcludedDomainsEditor(m_model,
                                                tr("Links from these domains will not be captured"),
                                                tr("Domain (e.g., example.com)")));
    column->addStretch();
    setWidget(content);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
}
