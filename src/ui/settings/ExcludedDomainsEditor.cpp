// SPDX-License-Identifier: MIT
#include "settings/ExcludedDomainsEditor.h"

#include "Caption.h"
#include "ElidedLabel.h"
#include "IconButton.h"
#include "settings/ExcludedDomainsModel.h"

#include <QBoxLayout>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace
{

QWidget *removerOf(const ExcludedDomain &excluded, ExcludedDomainsModel &model)
{
    auto *const remove =
        new IconButton(u"remove"_s, ExcludedDomainsEditor::tr("Remove %1").arg(excluded.domain));
    QObject::connect(remove, &IconButton::clicked, &model,
                     [&model, id = excluded.id] { model.remove(id); });
    return remove;
}

QWidget *rowOf(const ExcludedDomain &excluded, QWidget *remove)
{
    auto *const name = new ElidedLabel(ElidedLabel::Rank::primary);
    name->setText(excluded.domain);
    auto *const row = new QWidget;
    auto *const line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(name, 1);
    line->addWidget(remove);
    return row;
}

} // namespace

ExcludedDomainsEditor::ExcludedDomainsEditor(ExcludedDomainsModel &model, const QString &caption,
                                             const QString &placeholder, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_column(new QVBoxLayout(this))
{
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(10);
    m_column->addWidget(new Caption(caption));
    m_column->addLayout(makeField(placeholder));
    connect(&m_model, &ExcludedDomainsModel::changed, this, &ExcludedDomainsEditor::refresh);
    refresh();
}

QLayout *ExcludedDomainsEditor::makeField(const QString &placeholder)
{
    m_newDomain = new QLineEdit;
    m_newDomain->setPlaceholderText(placeholder);
    m_newDomain->setAccessibleName(tr("Domain to exclude"));
    connect(m_newDomain, &QLineEdit::returnPressed, this, &ExcludedDomainsEditor::add);
    auto *const add = new IconButton(u"plus"_s, tr("Add"));
    connect(add, &IconButton::clicked, this, &ExcludedDomainsEditor::add);
    auto *const line = new QHBoxLayout;
    line->addWidget(m_newDomain, 1);
    line->addWidget(add);
    return line;
}

void ExcludedDomainsEditor::add()
{
    if (m_model.add(m_newDomain->text()))
        m_newDomain->clear();
}

void ExcludedDomainsEditor::refresh()
{
    const qsizetype focused = m_removers.indexOf(window()->focusWidget());
    m_removers.clear();
    if (m_list)
        m_list->deleteLater(); // not now: one of its buttons may be what was pressed
    m_list = new QWidget;
    auto *const rows = new QVBoxLayout(m_list);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(2);
    const QList<ExcludedDomain> domains = m_model.domains();
    for (const ExcludedDomain &excluded : domains) {
        m_removers.append(removerOf(excluded, m_model));
        rows->addWidget(rowOf(excluded, m_removers.last()));
    }
    if (domains.isEmpty())
        rows->addWidget(new Caption(tr("No excluded domains")));
    m_column->addWidget(m_list);
    m_list->show(); // so that it can take the focus
    if (focused >= 0) // whoever removes by keyboard goes on with the next
        m_removers.value(std::min(focused, m_removers.size() - 1), m_newDomain)->setFocus();
}
