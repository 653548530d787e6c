// SPDX-License-Identifier: MIT
#pragma once

#include "MenuBarViewModel.h"

#include <QWidget>

class ElidedLabel;
class IconButton;
class IconLabel;
class QStackedLayout;

/// One row of the list that is in view: a link's title and time, its buttons in place of the time
/// while it is pointed at or the keyboard is on it, and below them its summary while it is
/// expanded. Rows are used again for other links.
class LinkRowView : public QWidget
{
    Q_OBJECT
public:
    explicit LinkRowView(MenuBarViewModel &model, QWidget *parent);

    /// The height of a collapsed row.
    static int collapsedHeight(const QWidget &list);
    /// What `summary` adds to it in a row of `width`.
    static int summaryHeight(const QWidget &list, const QString &summary, int width);

    /// Reserves room for the widest time, so that marks stand below each other.
    void setTimeWidth(int width);
    void display(const LinkRow &row);
    ListPosition position() const { return m_row.position; }
    LinkId id() const { return m_row.position.id; }
    void setHovering(bool isHovering);
    bool hasSummary() const { return m_row.summary.has_value(); }
    bool isExpanded() const;

Q_SIGNALS:
    void toggled(const ListPosition &position);
    void focused(const ListPosition &position);

protected:
    bool event(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    bool focusNextPrevChild(bool isNext) override;

private:
    IconButton *addButton(const QString &icon, const QString &toolTip,
                          void (MenuBarViewModel::*action)(const LinkId &));
    void refreshButtons();
    bool hasFocusWithin() const;

    MenuBarViewModel &m_model;
    LinkRow m_row;
    QWidget *m_line;
    ElidedLabel *m_title;
    ElidedLabel *m_time;
    IconLabel *m_marker;
    QList<IconButton *> m_buttons;
    QStackedLayout *m_side; ///< mark and time, or the buttons
    bool m_isHovering = false;
    bool m_isByKeyboard = false; ///< so came the focus, should the row have it
};
