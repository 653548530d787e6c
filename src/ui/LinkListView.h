// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

#include <QAbstractScrollArea>

#include <memory>
#include <optional>
#include <vector>

class LinkRowView;
class MenuBarViewModel;
class QVariantAnimation;
struct StoreChange;

/// The list of links, with widgets only for the rows in view. What is expanded, has the focus or is
/// at the top of the view goes by link, so it stays when rows come and go.
class LinkListView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    explicit LinkListView(MenuBarViewModel &model, QWidget *parent = nullptr);
    ~LinkListView() override;

    /// Scrolls to the top, collapses all, leaves no row current. To be called when the list is
    /// another one.
    void startAnew();
    /// Puts the keyboard on a row, the nearest there is, and scrolls it into view.
    void setCurrent(int row);
    /// Opens the first link of what was searched; none while nothing is.
    void openFirst();
    /// From top to bottom.
    std::vector<LinkRowView *> rowsInView() const;

Q_SIGNALS:
    /// The user typed something, which the list has no use for.
    void typed(const QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    /// A link, and where in the list it is at the moment.
    struct Place {
        ListPosition position;
        int row;
    };
    /// A row that is expanded, or on its way there or back.
    struct ExpandedRow {
        Place place;
        std::unique_ptr<QVariantAnimation> height; ///< what it is higher than the others
    };

    int rowHeight() const;
    int extraHeight(int row) const;
    int rowTop(int row) const;
    int rowAt(int y) const;
    int offset() const;
    int rowsAPage() const;
    int summaryHeight(int row) const;
    int timeWidth();
    LinkRowView *makeRow();
    LinkRowView *viewOf(const LinkId &id) const;
    LinkRowView *currentView() const;
    void takeRows(int first, int last);
    void layoutSoon();
    void layoutRows();
    void updateScrollBar();
    void rememberTop();
    void placeRows();
    void updateHovering();
    void focusCurrent();
    void keepFocus(const QWidget *before);
    void updateTabStops();
    Place placeOf(int row) const;
    void follow(const StoreChange &change);
    void refreshRows();
    void followPlace(std::optional<Place> &place);
    void toggle(const ListPosition &position);
    void forgetCollapsed();
    void scrollTo(int row);
    void actOnCurrent(void (MenuBarViewModel::*action)(const LinkId &));

    MenuBarViewModel &m_model;
    std::vector<ExpandedRow> m_expanded;
    std::vector<LinkRowView *> m_rows; ///< as on screen; unused ones are hidden, at the end
    std::optional<Place> m_current;
    std::optional<Place> m_top; ///< the first row in view; none while the list is at its top
    int m_timeWidth = 0; ///< of the widest; 0 until it was measured
    int m_topHidden = 0; ///< how much of it is scrolled out
    bool m_isLayoutPending = false;
    bool m_isLayingOut = false;
};
