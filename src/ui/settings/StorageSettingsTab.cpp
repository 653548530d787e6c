// SPDX-License-Identifier: MIT
#include "settings/StorageSettingsTab.h"

#include "Confirmation.h"
#include "FormWidgets.h"
#include "settings/AutoPruneChoices.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>

StorageSettingsTab::StorageSettingsTab(ModelContext &context, Preferences &preferences,
                                       QWidget *parent)
    : QWidget(parent)
    , m_history(context)
    , m_count(new QLabel)
{
    auto *const form = makeForm();
    form->addRow(tr("Stored Links"), m_count);
    addRow(form, tr("Auto-prune after"), autoPrunePicker(preferences));
    auto *const clear = destructiveButton(tr("Clear History"));
    connect(clear, &QPushButton::clicked, this, &StorageSettingsTab::confirmClearing);
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(10);
    column->addLayout(form);
    column->addWidget(clear, 0, Qt::AlignLeft);
    column->addStretch();
    connect(&m_history, &HistoryModel::changed, this, &StorageSettingsTab::refresh);
    refresh();
}

void StorageSettingsTab::confirmClearing()
{
    confirm(this,
            {tr("Clear History"),
             tr("This will permanently delete all captured links. This action cannot be undone."),
             tr("Clear All")},
            [this] { m_history.clear(); });
}

void StorageSettingsTab::refresh()
{
    m_count->setText(QString::number(m_history.count()));
}
