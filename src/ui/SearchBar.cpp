// SPDX-License-Identifier: MIT
#include "SearchBar.h"

#include "LinkListView.h"

#include <QApplication>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>

SearchBar::SearchBar(LinkListView &list, QWidget *parent)
    : QWidget(parent)
    , m_list(list)
    , m_edit(new QLineEdit)
{
    m_edit->setPlaceholderText(tr("Search titles, addresses and summaries"));
    m_edit->setAccessibleName(tr("Search"));
    m_edit->installEventFilter(this);
    connect(m_edit, &QLineEdit::textChanged, this, &SearchBar::textChanged);
    setFocusProxy(m_edit);

    auto *const line = new QHBoxLayout(this);
    line->setContentsMargins(12, 0, 12, 8);
    line->addWidget(m_edit);
    hide();
}

void SearchBar::open(const QString &text)
{
    show();
    m_edit->setFocus();
    m_edit->setText(m_edit->text() + text);
}

void SearchBar::close()
{
    m_edit->clear();
    if (isVisible())
        m_list.setFocus();
    hide();
}

void SearchBar::stepBack()
{
    if (m_edit->text().isEmpty())
        return close();
    m_edit->clear();
    m_edit->setFocus();
}

bool SearchBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    switch (static_cast<QKeyEvent *>(event)->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return QApplication::sendEvent(&m_list, event);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        m_list.openFirst();
        return true;
    default:
        return QWidget::eventFilter(watched, event);
    }
}
