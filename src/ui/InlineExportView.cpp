// SPDX-License-Identifier: MIT
#include "InlineExportView.h"

#include "Caption.h"
#include "FormWidgets.h"
#include "InlineExportViewModel.h"
#include "OptionPicker.h"
#include "Spinner.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

InlineExportView::InlineExportView(std::shared_ptr<InlineExportViewModel> model, QWidget *parent)
    : QWidget(parent)
    , m_model(std::move(model))
    , m_count(new QLabel)
{
    m_count->setFont(scaledFont(m_count->font(), 1.0, QFont::Medium));
    InlineExportViewModel *const state = m_model.get();
    auto *const form = makeForm();
    addRow(form, tr("Date Range"),
           optionPicker(inlineDateRangeOptions, state->dateRange(),
                        [state](InlineDateRangeOption range) { state->setDateRange(range); }));
    auto *const search = new QLineEdit;
    search->setPlaceholderText(tr("Search links..."));
    search->setAccessibleName(tr("Search links..."));
    connect(search, &QLineEdit::textChanged, state, &InlineExportViewModel::setSearchText);
    form->addRow(search);
    form->addRow(divider());
    addRow(form, tr("Format"),
           optionPicker(inlineExportFormats, state->exportFormat(),
                        [state](InlineExportFormat format) { state->setExportFormat(format); }));
    auto *const clear = new QCheckBox(tr("Clear from list after export"));
    connect(clear, &QCheckBox::toggled, state, &InlineExportViewModel::setClearAfterExport);

    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(10);
    column->addLayout(form);
    column->addWidget(divider());
    column->addWidget(m_count);
    column->addWidget(clear);
    column->addWidget(makeSummarizing());
    column->addLayout(makeButtons());

    connect(state, &InlineExportViewModel::changed, this, &InlineExportView::refresh);
    connect(state, &InlineExportViewModel::done, this, &InlineExportView::done);
    refresh();
}

QWidget *InlineExportView::makeSummarizing()
{
    auto *const busy = new QWidget;
    busy->setFixedSize(16, 16);
    (new Spinner(busy))->show();
    m_summarizing = new QWidget;
    auto *const line = new QHBoxLayout(m_summarizing);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(busy);
    line->addWidget(new Caption(tr("Generating summaries...")), 1);
    return m_summarizing;
}

QLayout *InlineExportView::makeButtons()
{
    auto *const cancel = new QPushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, m_model.get(), &InlineExportViewModel::cancel);
    m_export = primaryButton(tr("Export"));
    m_export->setDefault(true);
    connect(m_export, &QPushButton::clicked, m_model.get(), &InlineExportViewModel::exportLinks);
    auto *const line = new QHBoxLayout;
    line->addWidget(cancel);
    line->addStretch();
    line->addWidget(m_export);
    return line;
}

void InlineExportView::refresh()
{
    m_count->setText(tr("Links to export:") + u' ' + QString::number(m_model->linkCount()));
    m_summarizing->setVisible(m_model->isSummarizing());
    m_export->setEnabled(!m_model->isExporting());
}
