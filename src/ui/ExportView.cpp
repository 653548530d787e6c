// SPDX-License-Identifier: MIT
#include "ExportView.h"

#include "Calendar.h"
#include "Caption.h"
#include "ExportViewModel.h"
#include "FormWidgets.h"
#include "OptionPicker.h"
#include "Spinner.h"
#include "style/DevicePixels.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace
{

constexpr int contentWidth = 400;
constexpr int padding = 16;

using SetDay = void (ExportViewModel::*)(const QDate &);

QDateEdit *dayPicker(ExportViewModel &model, Instant day, SetDay setDay)
{
    auto *const picker = new QDateEdit(dateTimeOf(day).date());
    picker->setCalendarPopup(true);
    QObject::connect(picker, &QDateEdit::dateChanged, &model,
                     [&model, setDay](const QDate &date) { (model.*setDay)(date); });
    return picker;
}

} // namespace

ExportView::ExportView(std::shared_ptr<ExportViewModel> model, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
    , m_model(std::move(model))
    , m_form(makeForm())
    , m_count(new Caption)
{
    setWindowTitle(tr("Export Links"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *const title = new QLabel(tr("Export Links"));
    title->setFont(scaledFont(title->font(), 1.2, QFont::Bold));

    ExportViewModel *const state = m_model.get();
    addRow(m_form, tr("Date Range"),
           optionPicker(dateRangeOptions, state->selectedRange(),
                        [state](DateRangeOption range) { state->setSelectedRange(range); }));
    addRow(m_form, tr("From"),
           dayPicker(*state, state->customStartDate(), &ExportViewModel::setCustomStartDay));
    addRow(m_form, tr("To"),
           dayPicker(*state, state->customEndDate(), &ExportViewModel::setCustomEndDay));
    auto *const search = new QLineEdit;
    search->setPlaceholderText(tr("Filter links..."));
    search->setAccessibleName(tr("Filter links..."));
    connect(search, &QLineEdit::textChanged, state, &ExportViewModel::setSearchText);
    m_form->addRow(search);
    addRow(m_form, tr("Format"),
           optionPicker(exportFormats, state->selectedFormat(),
                        [state](ExportFormat format) { state->setSelectedFormat(format); }));
    auto *const clear = new QCheckBox(tr("Clear from list after export"));
    connect(clear, &QCheckBox::toggled, state, &ExportViewModel::setClearAfterExport);

    auto *const content = new QWidget;
    content->setFixedWidth(contentWidth);
    auto *const column = new QVBoxLayout(content);
    column->setContentsMargins(padding, padding, padding, padding);
    column->setSpacing(12);
    column->addWidget(title);
    column->addLayout(m_form);
    column->addWidget(m_count);
    column->addWidget(clear);
    column->addLayout(makeButtons());
    auto *const frame = new QVBoxLayout(this);
    frame->setContentsMargins(0, 0, 0, 0);
    frame->setSizeConstraint(QLayout::SetFixedSize);
    frame->addWidget(content);

    connect(state, &ExportViewModel::changed, this, &ExportView::refresh);
    connect(state, &ExportViewModel::done, this, &QDialog::accept);
    refresh();
}

ExportView::~ExportView()
{
    // A running export holds the model, and hears from the dialog that goes with this window.
    disconnect(m_model.get(), nullptr, this, nullptr);
}

QLayout *ExportView::makeButtons()
{
    auto *const cancel = new QPushButton(tr("Cancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    m_export = primaryButton(tr("Export"));
    m_export->setDefault(true);
    connect(m_export, &QPushButton::clicked, m_model.get(), &ExportViewModel::exportLinks);

    auto *const busy = new QWidget;
    busy->setFixedSize(20, 20);
    m_spinner = new Spinner(busy);
    m_spinner->setToolTip(tr("Generating summaries..."));
    auto *const line = new QHBoxLayout;
    line->addWidget(busy);
    line->addStretch();
    line->addWidget(cancel);
    line->addWidget(m_export);
    return line;
}

void ExportView::refresh()
{
    const bool isCustom = m_model->selectedRange() == DateRangeOption::custom;
    m_form->setRowVisible(1, isCustom);
    m_form->setRowVisible(2, isCustom);
    m_count->setText(m_model->countText());
    m_export->setEnabled(!m_model->isExporting());
    m_spinner->setVisible(m_model->isSummarizing());
}

void ExportView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && windowHandle())
        windowHandle()->startSystemMove();
}

void ExportView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    draw(painter, {QRectF(rect()), 0, Qt::transparent, palette().color(QPalette::Mid)});
}
