// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class LinkListView;
class QLineEdit;

/// The line above the list in which the user types what to find; hidden until then. The keys that
/// move through a list go on to the list.
class SearchBar : public QWidget
{
    Q_OBJECT
public:
    /// `list` outlives the bar.
    explicit SearchBar(LinkListView &list, QWidget *parent = nullptr);

    /// Shows the bar, gives it the focus, and adds `text` to what was typed before.
    void open(const QString &text = {});
    /// Empties and hides it.
    void close();
    /// Takes back what was typed, or closes when that is nothing.
    void stepBack();

Q_SIGNALS:
    void textChanged(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    LinkListView &m_list;
    QLineEdit *m_edit;
};
