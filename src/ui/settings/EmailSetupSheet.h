// SPDX-License-Identifier: MIT
#pragma once

#include "settings/ProviderPages.h"

#include <QDialog>

class EmailSettingsViewModel;
class QAction;
class QLineEdit;
class StatusLine;

/// Asks for the mail provider's key and the sender address. Stays open until they are saved or the
/// user cancels.
class EmailSetupSheet : public QDialog
{
    Q_OBJECT
public:
    /// `model` outlives the sheet.
    EmailSetupSheet(EmailSettingsViewModel &model, const ProviderPages &pages, QWidget *parent);

protected:
    bool event(QEvent *event) override;

private:
    QLayout *makeButtons();
    void fit();
    void save();
    void refresh();

    EmailSettingsViewModel &m_model;
    QLineEdit *m_apiKey;
    QLineEdit *m_fromEmail;
    QAction *m_keyMark; ///< seen in the field that an error is about
    QAction *m_addressMark;
    StatusLine *m_error;
    bool m_hasTried = false; ///< an error of an earlier sheet is none of this one
};
