// SPDX-License-Identifier: MIT
#include "Confirmation.h"

#include <QMessageBox>
#include <QPushButton>

void confirm(QWidget *window, const Confirmation &confirmation, std::function<void()> confirmed)
{
    auto *const box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Strandloom"),
                                      confirmation.title, QMessageBox::NoButton, window->window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(confirmation.message);
    auto *const cancel = box->addButton(QMessageBox::tr("Cancel"), QMessageBox::RejectRole);
    auto *const action = box->addButton(confirmation.action, QMessageBox::DestructiveRole);
    box->setDefaultButton(cancel);
    box->setEscapeButton(cancel);
    QObject::connect(action, &QPushButton::clicked, window, std::move(confirmed));
    box->open();
}
