// SPDX-License-Identifier: MIT
#include "settings/DataTabContent.h"

#include "Caption.h"
#include "Confirmation.h"
#include "FormWidgets.h"
#include "InlineExportView.h"
#include "InlineExportViewModel.h"
#include "Preferences.h"
#include "TintedIcon.h"
#include "settings/AutoPruneChoices.h"

#include <QComboBox>
#include <QFormLayout>
#include <QPushButton>

using namespace Qt::StringLiterals;

DataTabContent::DataTabContent(ModelContext &context, Preferences &preferences,
                               ExportService &exports, QWidget *parent)
    : QWidget(parent)
    , m_exports(exports)
    , m_history(context)
    , m_ownContent(makeOwnContent(preferences))
{
    auto *const column = new QVBoxLayout(this);
    column->addWidget(m_ownContent);
    column->addStretch();
    connect(&m_history, &HistoryModel::changed, this, &DataTabContent::refresh);
    refresh();
}

QWidget *DataTabContent::makeOwnContent(Preferences &preferences)
{
    m_count = new QLabel;
    auto *const form = makeForm();
    addRow(form, tr("Auto-delete after"), autoPrunePicker(preferences));
    auto *const exportLinks = new QPushButton(tintedIcon(u"export"_s), tr("Export Links..."));
    connect(exportLinks, &QPushButton::clicked, this, &DataTabContent::showExport);
    auto *const clear = destructiveButton(tr("Clear All History"));
    connect(clear, &QPushButton::clicked, this, &DataTabContent::confirmClearing);

    auto *const content = new QWidget;
    auto *const column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(10);
    column->addWidget(m_count);
    column->addLayout(form);
    column->addWidget(divider());
    column->addWidget(exportLinks, 0, Qt::AlignLeft);
    column->addWidget(divider());
    column->addWidget(clear, 0, Qt::AlignLeft);
    column->addWidget(new Caption(tr("Clearing history cannot be undone.")));
    return content;
}

void DataTabContent::refresh()
{
    m_count->setText(tr("Stored Links:") + u' ' + QString::number(m_history.count()));
}

void DataTabContent::showExport()
{
    auto *const screen = new InlineExportView(std::make_shared<InlineExportViewModel>(m_exports));
    connect(screen, &InlineExportView::done, this, &DataTabContent::leaveExport);
    m_export = screen;
    m_ownContent->hide();
    static_cast<QVBoxLayout *>(layout())->insertWidget(0, screen);
    screen->setFocus();
}

void DataTabContent::leaveExport()
{
    m_export->hide();
    m_export->deleteLater();
    m_ownContent->show();
}

void DataTabContent::confirmClearing()
{
    confirm(this,
            {tr("Delete all %1 links?").arg(m_history.count()), tr("This cannot be undone."),
             tr("Delete All")},
            [this] { m_history.clear(); });
}
