// SPDX-License-Identifier: MIT
#include "settings/SettingsView.h"

#include "TintedIcon.h"
#include "settings/EmailSettingsTab.h"
#include "settings/ExcludedDomainsTab.h"
#include "settings/GeneralSettingsTab.h"
#include "settings/StorageSettingsTab.h"

#include <QKeyEvent>

using namespace Qt::StringLiterals;

SettingsView::SettingsView(const SettingsDependencies &with, QWidget *parent)
    : QTabWidget(parent)
{
    setWindowTitle(tr("Settings"));
    setAttribute(Qt::WA_DeleteOnClose);
    setDocumentMode(true);
    addTab(new GeneralSettingsTab(with.preferences, with.setLaunchAtLogin), tintedIcon(u"gear"_s),
           tr("General"));
    addTab(new EmailSettingsTab(with.preferences, with.scheduler), tintedIcon(u"envelope"_s),
           tr("Email"));
    addTab(new ExcludedDomainsTab(with.modelContext, with.clock), tintedIcon(u"nosign"_s),
           tr("Excluded"));
    addTab(new StorageSettingsTab(with.modelContext, with.preferences), tintedIcon(u"drive"_s),
           tr("Storage"));
    resize(460, 320);
}

void SettingsView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QTabWidget::keyPressEvent(event);
}
