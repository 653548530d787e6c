// SPDX-License-Identifier: MIT
#include "Foreground.h"

#include <QApplication>
#include <QDialog>
#include <QWindow>

namespace
{

/// Of a window: whether it has been on the screen since it was shown. Until then it is not exposed
/// either, and to show it once more would only confuse the window manager.
constexpr auto wasSeen = "wasSeen";

class ExposeWatch : public QObject
{
public:
    explicit ExposeWatch(QWindow *window)
        : QObject(window)
    {
        window->installEventFilter(this);
    }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Expose && static_cast<QWindow *>(watched)->isExposed())
            watched->setProperty(wasSeen, true);
        return QObject::eventFilter(watched, event);
    }
};

void showAnew(QWidget &window)
{
    window.show();
    QWindow *const handle = window.windowHandle();
    if (!handle->property(wasSeen).isValid())
        new ExposeWatch(handle);
    handle->setProperty(wasSeen, handle->isExposed());
}

} // namespace

bool isInView(const QWidget &window)
{
    if (!window.isVisible())
        return false;
    const QVariant seen = window.windowHandle()->property(wasSeen);
    return window.windowHandle()->isExposed() || (seen.isValid() && !seen.toBool());
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
    if (!window.isVisible())
        showAnew(window);
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
