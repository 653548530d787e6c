#pragma once

#include "CapturedLink.h"

#include <QAbstractScrollArea>
#include <QHash>

#include <vector>

class LinkRowView;
class MenuBarViewModel;

/// The list of links, with widgets only for the rows in view. Which rows are expanded and which one
/// has the focus goes by link, so both stay when rows come and go.
class LinkListView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    explicit LinkListView(MenuBarViewModel &model, QWidget *parent = nullptr);

    /// Scrolls to the top and collapses all.
    void startAnew();
    /// Puts the keyboard on a row, the nearest there is, and scrolls it into view.
    void setCurrent(int row);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    int rowHeight() const;
    int rowTop(int row) const;
    int rowAt(int y) const;
    int currentRow() const;
    int rowsAPage() const;
    LinkRowView *makeRow();
    LinkRowView *viewOf(const LinkId &id) const;
    std::vector<LinkRowView *> takeRows(int first, int last);
    void layoutRows();
    void focusCurrent();
    void refreshRows();
    void rowsInserted(int first, int last);
    void rowsAboutToBeRemoved(int first, int last);
    void toggle(const LinkId &id);
    void scrollTo(int row);
    void actOnCurrent(void (MenuBarViewModel::*action)(const LinkId &));

    MenuBarViewModel &m_model;
    QHash<LinkId, int> m_expanded; ///< what each expanded row is higher than the others
    std::vector<LinkRowView *>
        m_rows; ///< in the order on screen; unused ones are hidden, at the end
    LinkId m_current;
};
