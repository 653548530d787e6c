// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsDependencies.h"
#include "settings/SettingsTab.h"

#include <QWidget>

class QScrollArea;
class QTabBar;

/// The settings within the panel: a row of tabs above the content of the chosen one.
class InlineSettingsView : public QWidget
{
    Q_OBJECT
public:
    explicit InlineSettingsView(const SettingsDependencies &with, QWidget *parent = nullptr);

    SettingsTab selectedTab() const { return m_selectedTab; }
    void select(SettingsTab tab);
    /// How high the whole view has to be, at its width, to show the tab without scrolling.
    int contentHeight() const;

Q_SIGNALS:
    void contentHeightChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *makeContent();

    const SettingsDependencies m_with;
    SettingsTab m_selectedTab = SettingsTab::general;
    QTabBar *m_tabs;
    QScrollArea *m_area;
};
