// SPDX-License-Identifier: MIT
#pragma once

#include "UpdateController.h"

#include <QDialog>

class QLabel;
class QPushButton;
class UrlOpener;

/// The small window that tells what a check for updates has come to.
class UpdateView : public QDialog
{
    Q_OBJECT
public:
    /// `urlOpener` outlives the window.
    explicit UpdateView(UrlOpener &urlOpener, QWidget *parent = nullptr);

    /// Shows the window with `status`. It takes the focus only in answer to what the user has just
    /// done.
    void present(const UpdateStatus &status);

private:
    void place();
    void openReleasePage();

    UrlOpener &m_urlOpener;
    QLabel *m_title;
    QLabel *m_message;
    QPushButton *m_openPage;
    QPushButton *m_close;
    QString m_releasePage;
};
