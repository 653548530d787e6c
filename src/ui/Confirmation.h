// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

class QWidget;

/// A question before something that cannot be undone.
struct Confirmation {
    QString title;
    QString message;
    QString action; ///< the label of the button that does it; the other one is "Cancel"
};

/// Asks on top of `window`, without blocking, and calls `confirmed` when the user agrees.
void confirm(QWidget *window, const Confirmation &confirmation, std::function<void()> confirmed);
