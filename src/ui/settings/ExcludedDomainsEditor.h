// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class ExcludedDomainsModel;
class QLineEdit;
class QVBoxLayout;

/// The excluded domains with what adds and removes them.
class ExcludedDomainsEditor : public QWidget
{
    Q_OBJECT
public:
    /// `model` outlives the editor.
    ExcludedDomainsEditor(ExcludedDomainsModel &model, const QString &caption,
                          const QString &placeholder, QWidget *parent = nullptr);

private:
    QLayout *makeField(const QString &placeholder);
    void add();
    void refresh();

    ExcludedDomainsModel &m_model;
    QLineEdit *m_newDomain = nullptr;
    QVBoxLayout *m_column;
    QWidget *m_list = nullptr;
    QList<QWidget *> m_removers; ///< the buttons of the list, in its order
};
