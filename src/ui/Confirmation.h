// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

#include <functional>

/// A question before something that cannot be undone.
struct Confirmation {
    QString title;
    QString message;
    QString action; ///< the label of the button that does it; the other one is "Cancel"
};

class ConfirmationView : public QDialog
{
    Q_OBJECT
public:
    ConfirmationView(const Confirmation &confirmation, QWidget *parent);
};

/// Asks on top of the window of `screen`, without blocking, and calls `confirmed` when the user
/// agrees. The question goes with `screen`.
void confirm(QWidget *screen, const Confirmation &confirmation, std::function<void()> confirmed);
