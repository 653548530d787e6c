// SPDX-License-Identifier: MIT
#include "Foreground.h"

#include <QApplication>
#include <QDialog>
#include <QWindow>

bool isInView(const QWidget &window)
{
    return window.isVisible() && window.windowHandle()->isExposed();
}

void bringToFront(QWidget &window)
{
    if (window.isVisible() && !isInView(window)) {
        // Window managers differ in what they do when such a window asks to be active; all show a
        // new one where the user is.
        window.hide();
        QWidget *const parent = window.parentWidget();
        if (parent && parent->window()->isVisible())
            bringToFront(*parent->window()); // or the new one would be put beside it
    }
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

QDialog *openDialog()
{
    return qobject_cast<QDialog *>(QApplication::activeModalWidget());
}

bool bringDialogToFront()
{
    QDialog *const dialog = openDialog();
    if (dialog)
        bringToFront(*dialog);
    return dialog;
}
