// SPDX-License-Identifier: MIT
// The smallest tray program that Qt Widgets allows: what each such program costs before it does
// anything. With "--window" it shows a window as well.

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QSystemTrayIcon>

#include <cstdio>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    QMenu menu;
    menu.addAction(QStringLiteral("Quit"), &application, &QCoreApplication::quit);
    QPixmap picture(22, 22);
    picture.fill(Qt::gray);
    QSystemTrayIcon icon{QIcon(picture)};
    icon.setContextMenu(&menu);
    icon.show();
    std::fputs("Tray icon shown\n", stderr);
    QLabel window(QStringLiteral("Nothing"));
    if (application.arguments().contains(QStringLiteral("--window")))
        window.show();
    return QApplication::exec();
}
