// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

#include <QAbstractScrollArea>
#include <QPersistentModelIndex>

#include <memory>
#include <vector>

class LinkRowView;
class MenuBarViewModel;
class QVariantAnimation;

/// The list of links, with widgets only for the rows in view. What is expanded, has the focus or is
/// at the top of the view goes by link, so it stays when rows come and go.
class LinkListView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    explicit LinkListView(MenuBarViewModel &model, QWidget *parent = nullptr);
    ~LinkListView() override;

    /// Scrolls to the top, collapses all, leaves no row current.
    void startAnew();
    /// Puts the keyboard on a row, the nearest there is, and scrolls it into view.
    void setCurrent(int row);
    /// From top to bottom.
    std::vector<LinkRowView *> rowsInView() const;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    /// A row that is expanded, or on its way there or back.
    struct ExpandedRow {
        QPersistentModelIndex index;
        std::unique_ptr<QVariantAnimation> height; ///< what it is higher than the others
    };

    int rowHeight() const;
    int extraHeight(int row) const;
    int rowTop(int row) const;
    int rowAt(int y) const;
    int offset() const;
    int rowsAPage() const;
    int summaryHeight(int row) const;
    LinkRowView *makeRow();
    LinkRowView *viewOf(const LinkId &id) const;
    LinkRowView *currentView() const;
    void takeRows(int first, int last);
    void fetchNearby();
    void layoutSoon();
    void layoutRows();
    void updateScrollBar();
    void rememberTop();
    void placeRows();
    void updateHovering();
    void focusCurrent();
    void keepFocus(const QWidget *before);
    void updateTabStops();
    void refreshRows(int first, int last);
    void rowsAboutToBeRemoved(int first, int last);
    void rowsRemoved();
    void toggle(const LinkId &id);
    void forgetCollapsed();
    void scrollTo(int row);
    void actOnCurrent(void (MenuBarViewModel::*action)(const LinkId &));

    MenuBarViewModel &m_model;
    std::vector<ExpandedRow> m_expanded;
    std::vector<LinkRowView *> m_rows; ///< as on screen; unused ones are hidden, at the end
    QPersistentModelIndex m_current;
    QPersistentModelIndex m_top; ///< the first row in view; none while the list is at its top
    int m_topHidden = 0; ///< how much of it is scrolled out
    bool m_isLayoutPending = false;
    bool m_isLayingOut = false;
};
