// SPDX-License-Identifier: MIT
#include "settings/InlineSettingsView.h"

#include "settings/DataTabContent.h"
#include "settings/EmailTabContent.h"
#include "settings/ExcludedTabContent.h"
#include "settings/GeneralTabContent.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QEvent>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QTabBar>

using namespace Qt::StringLiterals;

namespace
{
constexpr int margin = 12;
}

constexpr int tabsTop = 8;

QString label(SettingsTab tab)
{
    switch (tab) {
    case SettingsTab::general:
        return QCoreApplication::translate("SettingsTab", "General");
    case SettingsTab::email:
        return QCoreApplication::translate("SettingsTab", "Email");
    case SettingsTab::excluded:
        return QCoreApplication::translate("SettingsTab", "Excluded");
    case SettingsTab::data:
        return QCoreApplication::translate("SettingsTab", "Data");
    }
    Q_UNREACHABLE();
}

InlineSettingsView::InlineSettingsView(const SettingsDependencies &with, QWidget *parent)
    : QWidget(parent)
    , m_with(with)
    , m_tabs(new QTabBar)
    , m_area(new QScrollArea)
{
    setFocusProxy(m_tabs);
    m_tabs->setAccessibleName(tr("Settings"));
    m_tabs->setExpanding(true);
    m_tabs->setDrawBase(false);
    m_tabs->setElideMode(Qt::ElideRight);
    for (const SettingsTab tab : settingsTabs)
        m_tabs->addTab(label(tab));
    m_area->setWidgetResizable(true);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setFocusPolicy(Qt::NoFocus);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->viewport()->setAutoFillBackground(false);

    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto *const tabs = new QHBoxLayout;
    tabs->setContentsMargins(12, tabsTop, 12, 0);
    tabs->addWidget(m_tabs);
    column->addLayout(tabs);
    column->addWidget(m_area, 1);
    select(SettingsTab::general);
    connect(m_tabs, &QTabBar::currentChanged, this,
            [this](int index) { select(settingsTabs.at(std::size_t(index))); });
}

void InlineSettingsView::select(SettingsTab tab)
{
    m_selectedTab = tab;
    {
        const QSignalBlocker once(m_tabs); // which would select the tab again
        m_tabs->setCurrentIndex(int(tab));
    }
    QWidget *const content = makeContent();
    content->layout()->setContentsMargins(margin, margin, margin, margin);
    content->setAutoFillBackground(false);
    content->installEventFilter(this);
    m_area->setWidget(content);
    Q_EMIT contentHeightChanged();
}

QWidget *InlineSettingsView::makeContent()
{
    switch (m_selectedTab) {
    case SettingsTab::general:
        return new GeneralTabContent(m_with.preferences, m_with.updates, m_with.setLaunchAtLogin);
    case SettingsTab::email:
        return new EmailTabContent({m_with.modelContext,
                                    m_with.preferences,
                                    m_with.keys,
                                    m_with.manualSend,
                                    m_with.scheduler,
                                    {m_with.info, m_with.urlOpener}});
    case SettingsTab::excluded:
        return new ExcludedTabContent(m_with.modelContext, m_with.clock);
    case SettingsTab::data:
        return new DataTabContent(m_with.modelContext, m_with.preferences, m_with.exports);
    }
    Q_UNREACHABLE();
}

int InlineSettingsView::contentHeight() const
{
    const QLayout *const content = m_area->widget()->layout();
    const int height = content->hasHeightForWidth() ? content->totalHeightForWidth(width())
                                                    : content->totalSizeHint().height();
    return tabsTop + m_tabs->sizeHint().height() + height;
}

bool InlineSettingsView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::LayoutRequest)
        Q_EMIT contentHeightChanged();
    return QWidget::eventFilter(watched, event);
}
