// SPDX-License-Identifier: MIT
#include "Confirmation.h"

#include "Caption.h"
#include "Foreground.h"
#include "FormWidgets.h"

#include <QBoxLayout>
#include <QPushButton>

namespace
{
constexpr int contentWidth = 320;
constexpr int padding = 20;
} // namespace

ConfirmationView::ConfirmationView(const Confirmation &confirmation, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Strandloom"));
    setAccessibleDescription(confirmation.title + u'\n' + confirmation.message);
    auto *const title = new Caption(confirmation.title, Caption::Rank::primary);
    title->setFont(scaledFont(title->font(), 1.1, QFont::Bold));
    auto *const message = new Caption(confirmation.message);
    for (Caption *const text : {title, message})
        text->setFixedWidth(contentWidth);
    auto *const cancel = new QPushButton(tr("Cancel"));
    cancel->setDefault(true);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto *const action = destructiveButton(confirmation.action);
    action->setAutoDefault(false);
    connect(action, &QPushButton::clicked, this, &QDialog::accept);

    auto *const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancel);
    buttons->addWidget(action);
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(padding, padding, padding, padding);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(title);
    column->addWidget(message);
    column->addSpacing(padding / 2);
    column->addLayout(buttons);
}

void confirm(QWidget *screen, const Confirmation &confirmation, std::function<void()> confirmed)
{
    if (openDialog())
        return;
    auto *const question = new ConfirmationView(confirmation, screen);
    question->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(question, &QDialog::accepted, screen, std::move(confirmed));
    question->open();
}
